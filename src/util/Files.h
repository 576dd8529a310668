// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Files as whole texts, file lists, folders. Every failure names the file and the system's reason.

#include <cstddef>
#include <string>
#include <string_view>

#include "util/Lists.h"

namespace velmora {

// The path that stands for standard input where a file is read, which can be done once.
inline constexpr char kStandardInput[] = "-";
std::string ShownPath(const std::string& path);  // as messages name it: "standard input"

// The bytes of the file; a UTF-8 mark at the start is skipped. Raises "Cannot read %s: %s", as for what is no file and
// gives more than 1 GB.
std::string ReadFileText(const std::string& path);
// The bytes of the file as they are, the first `max` if there are more. Raises "Cannot read %s: %s".
std::string ReadFileBytes(const std::string& path, std::size_t max = std::string::npos);
// A file, or whatever can be opened as one, that is read in parts.
class TFileParts {
 public:
  explicit TFileParts(const std::string& path);  // raises "Cannot read %s: %s", as Read does
  ~TFileParts();
  TFileParts(const TFileParts&) = delete;
  TFileParts& operator=(const TFileParts&) = delete;

  // Adds the next `count` bytes to the text; gives false where there were fewer: its end is met.
  bool Read(std::string& text, std::size_t count);
  std::size_t Size() const { return size_; }  // when it was opened; 0 for what is no file

 private:
  std::string path_;
  int file_;
  std::size_t size_ = 0;
};

// Replaces the file in one step (temporary file beside it, flush, rename), or appends to it. A new file gets `mode`;
// a file that is replaced keeps its own, as far as a `mode` narrower than the usual one allows it, and its owner. But
// the file of another user is replaced by a new one of the writer where `mode` is narrower than the usual one, or where
// everybody or a stranger may write the folder. Where the path is a symbolic link, the file that it leads to is
// replaced; a link in a folder that others may write is an error (where only a group may, our own links and root's are
// followed). What is no regular file (a FIFO of ours, /dev/stdout) is written straight. Raises "Cannot write %s: %s";
// the old file is then whole, and nothing is left beside it. What a killed writer of ours left there more than a day
// ago goes with the next write.
void WriteFileText(const std::string& path, std::string_view text, bool append = false, unsigned mode = 0666);

// Adds folder and name of every file that `mask` (a folder and a file mask with * and ?) matches, case ignored, by
// name; `*.*` means every name. Names that hold "~" or consist of dots are left out. With `recurse` each matching
// folder, unless it is a link, is gone through with the mask `*.*`. `clear` empties the list first. A folder that
// cannot be read adds nothing. Gives the number of lines in the list.
std::size_t FindFiles(TStringList& list, const std::string& mask, bool recurse, bool clear);

std::string ExeFolder();  // folder of the running program, with the path delimiter at its end

// `folder` and `name` joined by the platform's path delimiter, which is not doubled.
std::string JoinPath(std::string_view folder, std::string_view name);

}  // namespace velmora
