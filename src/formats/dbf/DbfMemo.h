// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "formats/dbf/DbfFile.h"
#include "util/InputFile.h"

namespace velmora {

// The memo file of a table: .dbt of dBASE III or IV, .fpt of FoxPro ("Memo File Structure" in its documentation); what
// does not fit the records. Opened on first need and kept open.
class TDbfMemoFile {
 public:
  // The file has the table's name and `extension`, the case of letters playing no part.
  TDbfMemoFile(std::string table_path, std::string_view extension, EDbfMemo form)
      : table_path_(std::move(table_path)), extension_(extension), form_(form) {}

  // The memo that begins with block number `block`, as its bytes. Raises "Cannot open %s: %s", and "FILE: offset 0x..:
  // FAULT" for a memo that the file does not hold whole. Each memo belongs to one record, so when more bytes were read
  // than the file has, records share memos, which is a fault too: a small file would stand for any amount of memory.
  std::string Read(std::uint32_t block);

 private:
  void Open();
  std::string ReadToMark(std::uint64_t place);                     // dBASE III
  std::string ReadSized(std::uint64_t place, std::uint64_t size);  // the others
  void Count(std::uint64_t place, std::uint64_t size);

  std::string table_path_;
  std::string extension_;
  EDbfMemo form_;
  std::unique_ptr<TInputFile> file_;
  std::uint64_t block_size_ = 0;
  std::uint64_t read_ = 0;  // bytes of all memos so far
};

// The extension of the memo file of a table of this form: ".dbt" or ".fpt".
std::string_view DbfMemoExtension(EDbfMemo form);

}  // namespace velmora
