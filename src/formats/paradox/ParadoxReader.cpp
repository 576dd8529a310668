// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/paradox/ParadoxReader.h"

#include "formats/paradox/ParadoxValues.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/LittleEndian.h"

namespace velmora {
namespace {

constexpr char kEncrypted[] = "This file is encrypted.";
constexpr char kNoStream[] = "TpxTable.LoadNextBlock: No stream assigned";
constexpr char kLastRecordBeyondBlock[] = "the last record begins at %d, where a block of %d bytes has no room for %d";

constexpr std::size_t kAddDataSizeAt = 4;  // in a block

}  // namespace

TPxTable::TPxTable(const std::string& fileName, bool headerOnly)
    : file_(fileName), header_(ReadPxHeader(file_)), fields_(ReadPxFields(file_, header_)), memos_(fileName) {
  if (header_.encryption != 0) RaiseError(kEncrypted);
  CheckPxRecords(file_, header_, fields_);
  values_.resize(fields_.size());
  nextBlock_ = header_.FirstBlock();
  if (header_.numRecords == 0) return;
  block_.resize(header_.BlockSize());
  if (!headerOnly) LoadNextBlock();
}

void TPxTable::ReadHeaderInfo(const std::string& fileName, std::uint32_t& numRecords, std::uint16_t& numFields) {
  const TPxHeader header = ReadPxHeader(TInputFile(fileName, ESharing::Full));
  numRecords = header.numRecords;
  numFields = header.numFields;
}

void TPxTable::ReadRecord(std::int64_t /*number*/) {
  if (block_.empty()) return;
  CheckBlock();
  const char* record = block_.data() + kPxBlockHeader + record_;
  for (std::size_t i = 0; i < fields_.size(); ++i) DecodePxField(fields_[i], record, memos_, values_[i]);
  record_ += header_.recordSize;
  if (static_cast<std::int64_t>(record_) > lastRecord_) LoadNextBlock();
}

// Deliberate: blocks are taken in the order of the file, whatever the links between them say, and a file that ends
// before its records do leaves the last block in place, to be read again.
void TPxTable::LoadNextBlock() {
  if (!file_.IsOpen()) RaiseError(kNoStream);
  record_ = 0;
  do {
    const std::uint64_t place = header_.headerSize + nextBlock_ * block_.size();
    if (file_.ReadAt(place, block_) == 0) return;
    ++nextBlock_;
    lastRecord_ = LittleAt<std::int16_t>(block_.data() + kAddDataSizeAt);
  } while (lastRecord_ < 0);
}

void TPxTable::Close() {
  file_.Close();
  memos_.Close();
}

// Asked when records are wanted, so that a spoilt block after the last of them does no harm.
void TPxTable::CheckBlock() const {
  if (lastRecord_ + header_.recordSize <= static_cast<std::int64_t>(block_.size() - kPxBlockHeader)) return;
  const std::uint64_t block = header_.headerSize + (nextBlock_ - 1) * block_.size();
  RaisePxFault(file_.Path(), block + kAddDataSizeAt,
               Format(kLastRecordBeyondBlock, lastRecord_, block_.size(), header_.recordSize));
}

}  // namespace velmora
