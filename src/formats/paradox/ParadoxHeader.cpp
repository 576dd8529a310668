// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/paradox/ParadoxHeader.h"

#include <algorithm>
#include <array>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/LittleEndian.h"
#include "util/Text.h"

namespace velmora {
namespace {

// Where the numbers stand.
constexpr std::size_t kRecordSizeAt = 0x00;
constexpr std::size_t kHeaderSizeAt = 0x02;
constexpr std::size_t kFileTypeAt = 0x04;
constexpr std::size_t kMaxTableSizeAt = 0x05;
constexpr std::size_t kNumRecordsAt = 0x06;
constexpr std::size_t kFirstBlockAt = 0x0E;
constexpr std::size_t kNumFieldsAt = 0x21;
constexpr std::size_t kPrimaryKeyFieldsAt = 0x23;
constexpr std::size_t kFileVersionAt = 0x39;
constexpr std::size_t kEncryptionAt = 0x44;

constexpr std::size_t kExtension = 32;
constexpr std::size_t kFieldPair = 2;     // type and size of a field
constexpr std::size_t kFieldPointer = 4;  // one more number per field, not used, nor is the one in front of them all
constexpr std::size_t kNameWidthMax = 25;

constexpr char kFileTooShort[] = "the file ends within the first %d bytes of its header";
constexpr char kHeaderTooLong[] = "a header of %d bytes in a file of %d";
constexpr char kHeaderTooShort[] = "a header of %d bytes cannot hold %d fields";
constexpr char kNameMissing[] = "the header ends before the name of field %d";
constexpr char kKeyTooWide[] = "a primary key of %d fields in a table of %d";
constexpr char kRecordTooShort[] = "a record of %d bytes cannot hold field \"%s\", which ends at %d";
constexpr char kTooManyFields[] = "a record of %d bytes cannot hold %d fields";
constexpr char kMemoTooShort[] = "memo field \"%s\" has %d bytes, fewer than the %d of its descriptor";
constexpr char kBlockTooShort[] = "a block of %d bytes cannot hold a record of %d";
constexpr char kTooManyRecords[] = "%d records of %d bytes, but only %d bytes after the header";
constexpr char kNoFirstBlock[] = "the first block is number %d, which lies after the end of the file";

// Only tables and some kinds of index have it, and only in newer versions.
std::size_t ExtensionSize(const TPxHeader& header) {
  constexpr std::array<std::uint8_t, 4> kFileTypes = {0, 2, 3, 5};
  const bool has = header.fileVersionID > 4 && std::ranges::find(kFileTypes, header.fileType) != kFileTypes.end();
  return has ? kExtension : 0;
}

std::size_t TableNameSize(const TPxHeader& header) { return header.Version() >= 70 ? 261 : 79; }

// The part of the header after the 88 bytes.
std::string VariablePart(const TInputFile& file, const TPxHeader& header) {
  if (header.headerSize < kPxFixedHeader || header.headerSize > file.Size())
    RaisePxFault(file.Path(), kHeaderSizeAt, Format(kHeaderTooLong, header.headerSize, file.Size()));
  std::string part(header.headerSize - kPxFixedHeader, '\0');
  part.resize(file.ReadAt(kPxFixedHeader, part));
  return part;
}

// Takes the names one after the other out of the end of the header.
void ReadNames(const std::string& path, const std::string& part, std::size_t at, std::vector<TPxField>& fields) {
  for (TPxField& field : fields) {
    if (at >= part.size()) RaisePxFault(path, kPxFixedHeader + at, Format(kNameMissing, &field - fields.data() + 1));
    const std::size_t end = std::min(part.find('\0', at), part.size());
    field.name = CutChars(std::string_view(part).substr(at, end - at), kNameWidthMax);
    at = end + 1;
  }
}

// Bytes from the field to the next one. The size byte of a BCD field is no size.
std::size_t Span(const TPxField& field) { return field.type == pxBCD ? PxWidth(pxBCD) : field.size; }

void CheckField(const std::string& path, const TPxHeader& header, const TPxField& field, std::size_t size_at) {
  const std::size_t end = field.offset + std::max(Span(field), PxWidth(field.type));
  if (end > header.recordSize)
    RaisePxFault(path, kRecordSizeAt, Format(kRecordTooShort, header.recordSize, field.name, end));
  if (IsPxMemo(field.type) && field.size < kPxMemoDescriptor)
    RaisePxFault(path, size_at, Format(kMemoTooShort, field.name, field.size, kPxMemoDescriptor));
}

}  // namespace

int TPxHeader::Version() const {
  if (fileVersionID <= 3) return 30;
  if (fileVersionID == 4) return 35;
  if (fileVersionID <= 9) return 40;
  if (fileVersionID <= 11) return 50;
  return fileVersionID == 12 ? 70 : 65535;
}

bool IsPxMemo(std::uint8_t type) { return type >= pxMemo && type <= pxGraphic; }

std::size_t PxWidth(std::uint8_t type) {
  switch (type) {
    case pxLogical:
      return 1;
    case pxShort:
      return 2;
    case pxDate:
    case pxLong:
    case pxTime:
    case pxAutoInc:
      return 4;
    case pxCurrency:
    case pxNumber:
    case pxTimestamp:
      return 8;
    case pxBCD:
      return 17;
    default:
      return 0;
  }
}

void RaisePxFault(const std::string& path, std::uint64_t offset, std::string_view fault) {
  RaiseError(Format("%s: offset 0x%02X: %s", path, offset, fault));
}

TPxHeader ReadPxHeader(const TInputFile& file) {
  std::array<char, kPxFixedHeader> bytes{};
  const std::size_t count = file.ReadAt(0, bytes);
  if (count < bytes.size()) RaisePxFault(file.Path(), count, Format(kFileTooShort, bytes.size()));
  const char* at = bytes.data();
  return {.recordSize = LittleAt<std::uint16_t>(at + kRecordSizeAt),
          .headerSize = LittleAt<std::uint16_t>(at + kHeaderSizeAt),
          .fileType = LittleAt<std::uint8_t>(at + kFileTypeAt),
          .maxTableSize = LittleAt<std::uint8_t>(at + kMaxTableSizeAt),
          .numRecords = LittleAt<std::uint32_t>(at + kNumRecordsAt),
          .firstBlock = LittleAt<std::uint16_t>(at + kFirstBlockAt),
          .numFields = LittleAt<std::uint16_t>(at + kNumFieldsAt),
          .primaryKeyFields = LittleAt<std::uint16_t>(at + kPrimaryKeyFieldsAt),
          .fileVersionID = LittleAt<std::uint8_t>(at + kFileVersionAt),
          .encryption = LittleAt<std::uint32_t>(at + kEncryptionAt)};
}

std::vector<TPxField> ReadPxFields(const TInputFile& file, const TPxHeader& header) {
  const std::string part = VariablePart(file, header);
  const std::size_t pairs = ExtensionSize(header);
  const std::size_t names =
      pairs + header.numFields * (kFieldPair + kFieldPointer) + kFieldPointer + TableNameSize(header);
  if (names > part.size())
    RaisePxFault(file.Path(), kNumFieldsAt, Format(kHeaderTooShort, header.headerSize, header.numFields));
  if (header.primaryKeyFields > header.numFields)
    RaisePxFault(file.Path(), kPrimaryKeyFieldsAt, Format(kKeyTooWide, header.primaryKeyFields, header.numFields));
  std::vector<TPxField> fields(header.numFields);
  std::size_t offset = 0;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const char* pair = part.data() + pairs + i * kFieldPair;
    fields[i].type = LittleAt<std::uint8_t>(pair);
    fields[i].size = LittleAt<std::uint8_t>(pair + 1);
    fields[i].offset = offset;
    offset += Span(fields[i]);
  }
  ReadNames(file.Path(), part, names, fields);
  return fields;
}

void CheckPxRecords(const TInputFile& file, const TPxHeader& header, const std::vector<TPxField>& fields) {
  if (header.numRecords == 0) return;
  const auto fail = [&file](std::size_t offset, const std::string& fault) { RaisePxFault(file.Path(), offset, fault); };
  for (std::size_t i = 0; i < fields.size(); ++i)
    CheckField(file.Path(), header, fields[i], kPxFixedHeader + ExtensionSize(header) + i * kFieldPair + 1);
  // Fields without bytes would let a small file stand for any amount of memory.
  if (header.recordSize == 0 || fields.size() > header.recordSize)
    fail(kRecordSizeAt, Format(kTooManyFields, header.recordSize, fields.size()));
  if (kPxBlockHeader + header.recordSize > header.BlockSize())
    fail(kMaxTableSizeAt, Format(kBlockTooShort, header.BlockSize(), header.recordSize));
  const std::uint64_t room = file.Size() - header.headerSize;
  if (std::uint64_t{header.numRecords} * header.recordSize > room)
    fail(kNumRecordsAt, Format(kTooManyRecords, header.numRecords, header.recordSize, room));
  if (header.FirstBlock() * header.BlockSize() >= room) fail(kFirstBlockAt, Format(kNoFirstBlock, header.firstBlock));
}

}  // namespace velmora
