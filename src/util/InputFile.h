// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Files that are read by position, and files that are looked for by name alone.

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "util/Lists.h"

namespace velmora {

enum class ESharing {
  Full,       // others may do what they like meanwhile
  DenyWrites  // others that mean to write are held off
};

inline constexpr char kNoRegularFile[] = "it is no regular file";

// A regular file open for reading, closed at the end. All failures name the file and the system's reason.
class TInputFile {
 public:
  // Raises "Cannot open %s: %s". With DenyWrites the file gets a shared lock, which whoever locks it for writing
  // respects, among them file servers on behalf of their clients; a file that is so locked cannot be opened.
  explicit TInputFile(std::string path, ESharing sharing = ESharing::DenyWrites);
  ~TInputFile() { Close(); }
  TInputFile(const TInputFile&) = delete;
  TInputFile& operator=(const TInputFile&) = delete;

  const std::string& Path() const { return path_; }
  std::uint64_t Size() const { return size_; }  // in bytes, when it was opened
  bool IsOpen() const { return fd_ >= 0; }
  void Close();

  // Fills `buffer` with what stands at `offset` and gives the number of bytes; fewer than asked for where the file
  // ends. Raises "Cannot read %s at offset %d: %s", and ECancelled in work that was left (Aside.h).
  std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer) const;

 private:
  std::string path_;
  std::uint64_t size_ = 0;
  int fd_ = -1;
};

// The names in folders, each of which is gone through once, when it is first asked for: what comes into being later is
// not among them.
class TFolderNames {
 public:
  // Those that are equal to `name` but for the case of letters, in order.
  const TStringList& Like(const std::string& folder, std::string_view name);

 private:
  std::map<std::string, std::unordered_map<std::string, TStringList>> folders_;  // names by those in lower case
};

// The path of the file `stem` + `extension` in `folder`. The case of letters plays no part where none has exactly that
// name; among several the one with the very stem is taken, else the first by name. Without such a file: the path that
// it would have. Who looks for many files keeps the `known` names, so that the folder is gone through once.
std::string FindFileNoCase(std::string_view folder, std::string_view stem, std::string_view extension,
                           TFolderNames* known = nullptr);

}  // namespace velmora
