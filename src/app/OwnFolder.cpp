// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OwnFolder.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "exact/run/StructureDigest.h"
#include "mysqltext/ScriptFolder.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

namespace fs = std::filesystem;

constexpr char kForeign[] = "%s holds %s, which %s wrote: give a folder of its own";
constexpr char kNoFolder[] = "%s is no folder";
constexpr char kCannotMake[] = "Cannot make the folder %s: %s";
constexpr char kCannotRemove[] = "Cannot remove %s: %s";
constexpr char kBadLine[] = "%s: line %d: this is no file that %s writes; was the list changed?";

TStringList ReadList(const std::string& path, const TFolderWriter& writer) {
  std::error_code unknown;
  TStringList files;
  if (!fs::exists(path, unknown)) return files;
  TStringList lines;
  SplitPlain('\n', ReadFileText(path), lines);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string line = Trim(lines[i]);
    if (line.empty() || line.starts_with('#')) continue;
    if (!writer.is_own(line)) RaiseError(Format(kBadLine, path, i + 1, std::string(writer.who)));
    files.push_back(line);
  }
  return files;
}

void Make(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) RaiseError(Format(kCannotMake, folder, error.message()));
}

}  // namespace

std::string SafeFileName(const std::string& name) {
  constexpr std::size_t kLongest = 200;  // bytes; file systems take 255
  std::string safe;
  for (const char c : name) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    safe += plain ? std::string(1, c) : Format("%%%02X", static_cast<int>(static_cast<unsigned char>(c)));
  }
  // Names of devices, which some systems give no file.
  const bool device = InList(safe, {"con", "prn", "aux", "nul"}) ||
                      (safe.size() == 4 && (safe.starts_with("com") || safe.starts_with("lpt")));
  if (device) safe = Format("%%%02X", static_cast<int>(safe[0])) + safe.substr(1);
  if (safe.size() <= kLongest) return safe;
  return safe.substr(0, kLongest) + "~" + TextDigest(name);
}

TOwnFolder::TOwnFolder(std::string folder, const TFolderWriter& writer)
    : folder_(std::move(folder)), list_(JoinPath(folder_, writer.list)), writer_(writer) {
  std::error_code unknown;
  if (!fs::exists(folder_, unknown)) return;
  if (!IsFolder(folder_)) RaiseError(Format(kNoFolder, folder_));
  const TStringList listed = ReadList(list_, writer);
  written_.insert(listed.begin(), listed.end());
  for (const std::string& file : ScriptFilesIn(folder_))
    if (!written_.contains(file)) RaiseError(Format(kForeign, folder_, file, std::string(writer.none)));
}

void TOwnFolder::Write(const std::map<std::string, std::string>& files, const std::set<std::string>& kept,
                       TFolderChanges& changes) {
  Make(folder_);
  std::set<std::string> now = kept;
  for (const auto& [file, text] : files) now.insert(file);
  // What is written is in the list before it is there.
  std::set<std::string> all = now;
  all.insert(written_.begin(), written_.end());
  WriteList(all);
  for (const auto& [file, text] : files) WriteOne(file, text, changes);
  for (const std::string& file : written_)
    if (!now.contains(file)) Remove(file, changes);
  WriteList(now);
}

void TOwnFolder::WriteList(const std::set<std::string>& files) const {
  std::string text(writer_.head);
  for (const std::string& file : files) text += file + "\n";
  std::error_code unknown;
  if (!fs::exists(list_, unknown) || ReadFileBytes(list_) != text) WriteFileText(list_, text);
}

void TOwnFolder::WriteOne(const std::string& file, const std::string& text, TFolderChanges& changes) const {
  const std::string path = JoinPath(folder_, file);
  std::error_code unknown;
  const bool there = fs::exists(path, unknown);
  if (there && ReadFileBytes(path) == text) {
    ++changes.unchanged;
    return;
  }
  const std::size_t slash = file.find('/');
  if (slash != std::string::npos) Make(JoinPath(folder_, file.substr(0, slash)));
  WriteFileText(path, text);
  (there ? changes.changed : changes.added).push_back(file);
}

void TOwnFolder::Remove(const std::string& file, TFolderChanges& changes) const {
  const std::string path = JoinPath(folder_, file);
  std::error_code error;
  if (fs::remove(path, error)) changes.removed.push_back(file);
  if (error) RaiseError(Format(kCannotRemove, path, error.message()));
  if (file.find('/') != std::string::npos)
    fs::remove(fs::path(path).parent_path(), error);  // which does nothing where something is left in it
}

}  // namespace velmora
