// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mdb/MdbWriter.h"

#include <filesystem>
#include <string>

#include "formats/mdb/MdbBuilder.h"
#include "formats/mdb/MdbPages.h"
#include "util/Clock.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kExists[] = "Cannot create %s: there is a file of that name";

}  // namespace

// Deliberate: the indexes of the system's tables are left out, since nobody has told how their texts are sorted.
void CreateMdbFile(const std::string& path) {
  std::error_code error;
  if (std::filesystem::exists(std::filesystem::symlink_status(path, error))) RaiseError(Format(kExists, path));
  WriteFileText(path, TMdbBuilder(kMdbJet4, SystemClock().Now()).Bytes());
}

}  // namespace velmora
