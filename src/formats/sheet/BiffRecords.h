// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The records of an Excel workbook before 2007 and the texts in them (BIFF5 and BIFF8: Microsoft's published [MS-XLS],
// and the description of the format that OpenOffice published).

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "util/CodePage.h"

namespace velmora {

struct TBiffRecord {
  std::uint16_t kind = 0;
  std::string_view data;
};

// Goes from record to record. The bytes outlive it and what it gives.
class TBiffRecords {
 public:
  explicit TBiffRecords(std::string_view stream, std::size_t at = 0) : stream_(stream), at_(at) {}

  TBiffRecord Next();               // raises an error where the stream ends before the record does
  bool NextIsContinuation() const;  // of the record before
  std::size_t Position() const { return at_; }

 private:
  std::string_view stream_;
  std::size_t at_;
};

TCodePage BiffCodePage(unsigned number);  // by the number that workbooks know a page by

// Reads what a record holds, and the continuations after it as if they were one. Every read beyond the last of them
// raises an error.
class TBiffReader {
 public:
  TBiffReader(TBiffRecords& records, std::string_view data) : records_(records), piece_(data) {}

  bool AtEnd() const { return piece_.empty() && !records_.NextIsContinuation(); }
  std::uint8_t Byte();
  std::uint16_t Word();
  std::uint32_t Long();
  double Float();
  void Skip(std::size_t count);

  // A text of BIFF8: the number of its letters, how they are stored, formats and pronunciation, which are passed over.
  std::string WideText() { return WideText(Word()); }
  std::string ShortWideText() { return WideText(Byte()); }
  // One of BIFF5.
  std::string PlainText(const TCodePage& page) { return page.Decode(Bytes(Word())); }
  std::string ShortPlainText(const TCodePage& page) { return page.Decode(Bytes(Byte())); }

 private:
  std::string WideText(std::size_t letters);
  std::string Letters(std::size_t count, bool wide);
  std::string Bytes(std::size_t count);
  void NextPiece();

  TBiffRecords& records_;
  std::string_view piece_;
};

}  // namespace velmora
