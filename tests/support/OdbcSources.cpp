// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/OdbcSources.h"

#include <dlfcn.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora::testing {

namespace {

// The folder with the two files, which the driver manager is led to.
const std::string& Folder() {
  static const TScratchFolder folder;
  static const bool prepared = [] {
    WriteFileText(folder / "odbcinst.ini", "");
    // Drivers load this library, and let it go with all that it has read in its memory; so it is held on to.
    dlopen("libodbcinst.so.2", RTLD_LAZY);
    setenv("ODBCSYSINI", folder.Path().c_str(), 1);
    setenv("ODBCINI", (folder / "odbc-of-user.ini").c_str(), 1);
    return true;
  }();
  static_cast<void>(prepared);
  return folder.Path();
}

}  // namespace

std::string OdbcDriverFile(std::string_view name) {
  for (const auto& entry : std::filesystem::directory_iterator("/usr/lib")) {
    const std::filesystem::path file = entry.path() / "odbc" / name;
    std::error_code ignored;
    if (std::filesystem::exists(file, ignored)) return file;
  }
  throw std::runtime_error("no ODBC driver " + std::string(name) + "; ./setup installs it");
}

void AddOdbcSource(const std::string& name, const std::string& driver_file, const std::string& settings) {
  const std::string driver = "[" + name + "]\nDriver=" + driver_file + "\n";
  WriteFileText(Folder() + "/odbc.ini", driver + settings + "\n", true);
}

}  // namespace velmora::testing
