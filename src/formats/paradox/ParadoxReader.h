// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "formats/paradox/ParadoxHeader.h"
#include "formats/paradox/ParadoxMemo.h"
#include "util/InputFile.h"
#include "util/Variant.h"

namespace velmora {

// Reads one Paradox table, forward only and one block at a time: the header, the fields, then record after record.
// It never writes. Failures of the system name the file; what is wrong in a file is told with its name, the offset and
// the fault.
class TPxTable {
 public:
  // Opens the table, reads its header, and unless `headerOnly` loads the first block with records. Raises "This file is
  // encrypted." for an enciphered table, and for numbers of the header that the file cannot hold.
  TPxTable(const std::string& fileName, bool headerOnly);

  // How many records and fields the table has, by the fixed part of its header alone; the file is not locked.
  static void ReadHeaderInfo(const std::string& fileName, std::uint32_t& numRecords, std::uint16_t& numFields);

  const TPxHeader& Header() const { return header_; }
  const std::vector<TPxField>& Fields() const { return fields_; }
  // The values of the record read last, one per field; null before the first. They may be moved from.
  std::vector<TVariant>& Values() { return values_; }

  // Decodes the next record, of a table that was not opened with `headerOnly`. Deliberate: the number plays no part,
  // records come in order and the caller counts them against numRecords. Beyond the last block records repeat.
  void ReadRecord(std::int64_t number);

  // Loads the next block, in file order, that holds records; where the file ends the block stays as it was.
  void LoadNextBlock();

  void Close();  // both files; the header, the fields and the values stay

 private:
  void CheckBlock() const;

  TInputFile file_;
  TPxHeader header_;
  std::vector<TPxField> fields_;
  std::vector<TVariant> values_;
  TPxMemoFile memos_;
  std::vector<char> block_;  // the block's header, then its records
  std::uint64_t nextBlock_ = 0;
  std::int64_t lastRecord_ = 0;  // offset of the block's last record among its records; negative: it holds none
  std::size_t record_ = 0;       // the same of the next one to decode
};

}  // namespace velmora
