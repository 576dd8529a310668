// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The header of a Paradox table file: its numbers, and the fields it declares. The layout is in docs/paradox.md.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "util/InputFile.h"

namespace velmora {

// Codes of field types; any other byte may occur too.
enum EPxType : std::uint8_t {
  pxAlpha = 1,
  pxDate = 2,
  pxShort = 3,
  pxLong = 4,
  pxCurrency = 5,
  pxNumber = 6,
  pxLogical = 9,
  pxMemo = 12,
  pxBinary = 13,
  pxFmtMemo = 14,
  pxOLE = 15,
  pxGraphic = 16,
  pxTime = 20,
  pxTimestamp = 21,
  pxAutoInc = 22,
  pxBCD = 23,
  pxBytes = 24
};

struct TPxField {
  std::string name;  // at most 25 characters
  std::uint8_t type = 0;
  std::size_t offset = 0;  // in the record
  std::size_t size = 0;    // as the file states it
};

inline constexpr std::size_t kPxFixedHeader = 88;
inline constexpr std::size_t kPxBlockHeader = 6;
inline constexpr std::size_t kPxMemoDescriptor = 10;  // the end of each memo field

struct TPxHeader {
  std::uint16_t recordSize = 0;
  std::uint16_t headerSize = 0;
  std::uint8_t fileType = 0;
  std::uint8_t maxTableSize = 0;  // the size of a block, in units of 1024 bytes
  std::uint32_t numRecords = 0;
  std::uint16_t firstBlock = 0;  // from 1; 0 stands for the first too
  std::uint16_t numFields = 0;
  std::uint16_t primaryKeyFields = 0;
  std::uint8_t fileVersionID = 0;
  std::uint32_t encryption = 0;  // not 0: the table is enciphered

  int Version() const;  // 30, 35, 40, 50, 70, or 65535 for what came later
  std::size_t BlockSize() const { return std::size_t{maxTableSize} * 1024; }
  std::size_t FirstBlock() const { return firstBlock == 0 ? 0U : firstBlock - 1U; }  // from 0
};

// Whether a field of this type keeps its end in the memo file.
bool IsPxMemo(std::uint8_t type);
// Bytes of a value of this type; 0 for a type that goes by the size of its field, or is not known.
std::size_t PxWidth(std::uint8_t type);

// Raises "FILE: offset 0x..: FAULT".
[[noreturn]] void RaisePxFault(const std::string& path, std::uint64_t offset, std::string_view fault);

// The numbers of the first 88 bytes. Raises for a file that is shorter.
TPxHeader ReadPxHeader(const TInputFile& file);
// The fields, with their places in the record. Raises for a header that ends before they do.
std::vector<TPxField> ReadPxFields(const TInputFile& file, const TPxHeader& header);
// Raises unless the records, as far as there are any, fit their blocks and the file.
void CheckPxRecords(const TInputFile& file, const TPxHeader& header, const std::vector<TPxField>& fields);

}  // namespace velmora
