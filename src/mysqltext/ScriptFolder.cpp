// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/ScriptFolder.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <system_error>

#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

namespace fs = std::filesystem;

constexpr char kCannotRead[] = "Cannot read %s: %s";
constexpr std::string_view kEnding = ".sql";

bool EndsInSql(const fs::path& path) { return SameText(path.extension().string(), kEnding); }

// Calls `take` with each script until it gives false; those in folders up to `depth` below this one.
template <class Take>
void GoThrough(const std::string& folder, int depth, Take take) {
  std::error_code error;
  fs::recursive_directory_iterator at(folder, error);
  for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
    const fs::path& path = at->path();
    const bool hidden = path.filename().string().starts_with('.');
    std::error_code unknown;
    if (at->is_directory(unknown)) {
      if (hidden || at.depth() >= depth) at.disable_recursion_pending();
    } else if (!hidden && EndsInSql(path) && !take(path)) {
      return;
    }
  }
  if (error) RaiseError(Format(kCannotRead, folder, error.message()));
}

}  // namespace

bool IsFolder(const std::string& path) {
  if (path == kStandardInput) return false;
  std::error_code unknown;
  return fs::is_directory(path, unknown);
}

bool IsScriptFolder(const std::string& path) {
  if (!IsFolder(path)) return false;
  std::error_code unknown;
  bool found = fs::exists(fs::path(path) / kExportList, unknown);
  if (!found)
    GoThrough(path, 1, [&found](const fs::path&) {
      found = true;
      return false;
    });
  return found;
}

TStringList ScriptFilesIn(const std::string& folder) {
  TStringList files;
  GoThrough(folder, std::numeric_limits<int>::max(), [&](const fs::path& path) {
    files.push_back(path.lexically_relative(folder).generic_string());
    return true;
  });
  std::ranges::sort(files);
  return files;
}

}  // namespace velmora
