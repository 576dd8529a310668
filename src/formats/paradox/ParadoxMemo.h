// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "util/InputFile.h"

namespace velmora {

// The memo file of a Paradox table: what does not fit the records. Opened on first need and kept open.
class TPxMemoFile {
 public:
  // The file has the table's name with the extension ".mb", the case of letters playing no part.
  explicit TPxMemoFile(std::string table_path) : table_path_(std::move(table_path)) {}

  // The memo of `length` bytes at `location`: bits 8 to 31 are the offset of a block, bits 0 to 7 an index into it.
  // Raises "Cannot open %s: %s", and "FILE: offset 0x..: FAULT" where the file ends before the memo does.
  std::string Read(std::uint32_t location, std::size_t length);

  bool IsOpen() const { return file_ && file_->IsOpen(); }
  void Close() { file_.reset(); }

 private:
  void Open();
  // Where the memo with this index begins, in a block that several share.
  std::uint64_t SharedPlace(std::uint64_t block, std::uint32_t index) const;

  std::string table_path_;
  std::optional<TInputFile> file_;
};

}  // namespace velmora
