// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/dbf/DbfFile.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/LittleEndian.h"
#include "util/Text.h"

namespace velmora {
namespace {

// Where the numbers stand in the head.
constexpr std::size_t kHeadFixed = 32;
constexpr std::size_t kRecordsAt = 4;
constexpr std::size_t kHeadSizeAt = 8;
constexpr std::size_t kRecordSizeAt = 10;
constexpr std::size_t kEncryptionAt = 15;
constexpr std::size_t kFlagsAt = 28;
constexpr std::size_t kCodePageAt = 29;

// The same in a field's descriptor.
constexpr std::size_t kDescriptor = 32;
constexpr std::size_t kNameSize = 11;
constexpr std::size_t kTypeAt = 11;
constexpr std::size_t kSizeAt = 16;
constexpr std::size_t kDecimalsAt = 17;
constexpr std::size_t kFieldFlagsAt = 18;
constexpr char kEndOfFields = 0x0D;

constexpr std::size_t kLinkSize = 263;
constexpr std::size_t kBlockSize = 0x40000;

constexpr std::uint8_t kDBase2 = 0x02;
constexpr std::string_view kVersions = "\x03\x04\x05\x30\x31\x32\x43\x63\x7B\x83\x8B\x8C\x8E\xCB\xF5\xFB";

constexpr char kFileTooShort[] = "the file ends within the first %d bytes of its head";
constexpr char kNoTable[] = "byte 0x%02X stands for no table of dBASE or FoxPro";
constexpr char kOtherLayout[] = "tables of %s cannot be read";
constexpr char kEnciphered[] = "the table is enciphered";
constexpr char kHeadTooLong[] = "a head of %d bytes in a file of %d";
constexpr char kNoFields[] = "no field is declared";
constexpr char kNameless[] = "field %d has no name";
constexpr char kUnknownType[] = "field \"%s\" is of an unknown type (0x%02X)";
constexpr char kFieldSize[] = "field \"%s\" of type %s has %d bytes";
constexpr char kRecordTooShort[] = "a record of %d bytes cannot hold its fields, which have %d";
constexpr char kNoNullFlags[] = "field \"%s\" has a bit among the null flags, which have %d bits";
constexpr char kNoCodePage[] = "%s: there is no code page %s";
constexpr char kTooManyRecords[] = "%d records of %d bytes, but only %d bytes after the head";
constexpr char kCut[] = "record %d of %d is missing";

struct TWidthRow {
  char type;
  std::size_t width, other_width;  // 0: any
};

constexpr TWidthRow kWidths[] = {
    {'C', 0, 0},  {'N', 0, 0}, {'F', 0, 0}, {'L', 1, 1}, {'D', 8, 8}, {'M', 4, 10}, {'G', 4, 10}, {'P', 4, 10},
    {'W', 4, 10}, {'I', 4, 4}, {'B', 8, 8}, {'Y', 8, 8}, {'T', 8, 8}, {'V', 0, 0},  {'Q', 0, 0},  {'0', 0, 0},
};

TDbfHead ReadHead(const TInputFile& file) {
  std::array<char, kHeadFixed> bytes{};
  const std::size_t count = file.ReadAt(0, bytes);
  if (count < bytes.size()) RaiseDbfFault(file.Path(), count, Format(kFileTooShort, bytes.size()));
  const char* at = bytes.data();
  const TDbfHead head{.version = LittleAt<std::uint8_t>(at),
                      .records = LittleAt<std::uint32_t>(at + kRecordsAt),
                      .head_size = LittleAt<std::uint16_t>(at + kHeadSizeAt),
                      .record_size = LittleAt<std::uint16_t>(at + kRecordSizeAt),
                      .flags = LittleAt<std::uint8_t>(at + kFlagsAt),
                      .code_page = LittleAt<std::uint8_t>(at + kCodePageAt)};
  if (head.version == kDBase2) RaiseDbfFault(file.Path(), 0, Format(kOtherLayout, "dBASE II"));
  if (kVersions.find(at[0]) == std::string_view::npos) RaiseDbfFault(file.Path(), 0, Format(kNoTable, head.version));
  if (head.head_size < kHeadFixed || head.head_size > file.Size())
    RaiseDbfFault(file.Path(), kHeadSizeAt, Format(kHeadTooLong, head.head_size, file.Size()));
  if (at[kEncryptionAt] == 1 && head.Memo() != EDbfMemo::FoxPro) RaiseDbfFault(file.Path(), kEncryptionAt, kEnciphered);
  return head;
}

void CheckWidth(const std::string& path, std::size_t at, const TDbfField& field) {
  const auto* row = std::ranges::find(kWidths, field.type, &TWidthRow::type);
  if (row == std::end(kWidths))
    RaiseDbfFault(path, at + kTypeAt, Format(kUnknownType, field.name, static_cast<unsigned char>(field.type)));
  const bool fits = row->width == 0 ? field.size > 0 : field.size == row->width || field.size == row->other_width;
  if (!fits)
    RaiseDbfFault(path, at + kSizeAt, Format(kFieldSize, field.name, std::string_view(&field.type, 1), field.size));
}

// Gives the end of the last field.
std::size_t Place(std::vector<TDbfField>& fields) {
  std::size_t end = 1;  // after the mark of deletion
  for (TDbfField& field : fields) {
    field.offset = end;
    end += field.size;
  }
  return end;
}

}  // namespace

EDbfMemo TDbfHead::Memo() const {
  switch (version) {
    case 0x30:
    case 0x31:
    case 0x32:
    case 0xF5:
      return EDbfMemo::FoxPro;
    case 0x03:
    case 0x83:
    case 0xFB:
      return EDbfMemo::DBase3;
    default:
      return EDbfMemo::DBase4;
  }
}

void RaiseDbfFault(const std::string& path, std::uint64_t offset, std::string_view fault) {
  RaiseError(Format("%s: offset 0x%02X: %s", path, offset, fault));
}

std::string DbfResolvePath(const std::string& folder, std::string_view path, TFolderNames* known) {
  std::string rest = StrReplace(path, "\\", "/");
  if (rest.starts_with('/') || rest.find(':') != std::string::npos) rest.erase(0, rest.find_last_of("/:") + 1);
  std::string found = folder;
  TStringList parts;
  SplitText("/", rest, parts);
  for (const std::string& part : parts)
    if (!part.empty() && part != ".")
      found = part == ".." ? JoinPath(found, part) : FindFileNoCase(found, part, "", known);
  return found;
}

TDbfFile::TDbfFile(const std::string& path, const char* unstated, const std::string& stated, TFolderNames* known)
    : file_(path, ESharing::Full), head_(ReadHead(file_)), page_(CodePageOf(unstated, stated, known)) {
  ReadFields();
  PlaceFields();
  NumberBits();
  CheckRecords();
}

TCodePage TDbfFile::CodePageOf(const char* unstated, const std::string& stated, TFolderNames* known) {
  constexpr std::size_t kLongestName = 64;
  if (const auto name = CodePageNamed(stated)) return TCodePage(*name);
  const std::filesystem::path path(Path());
  const std::string beside = FindFileNoCase(path.parent_path().string(), path.stem().string(), ".cpg", known);
  std::error_code error;
  if (!std::filesystem::is_regular_file(beside, error)) return DbfCodePage(head_.code_page, unstated);
  std::string text(kLongestName, '\0');
  text.resize(TInputFile(beside, ESharing::Full).ReadAt(0, text));
  if (const auto name = CodePageNamed(text)) return TCodePage(*name);
  warnings_.push_back(Format(kNoCodePage, beside, ShownText(Trim(text))));
  return DbfCodePage(head_.code_page, unstated);
}

const TDbfField* TDbfFile::NullFlags() const {
  const auto field = std::ranges::find(fields_, '0', &TDbfField::type);
  return field == fields_.end() ? nullptr : &*field;
}

std::string TDbfFile::DatabaseLink() const {
  if (!head_.IsVisualFoxPro() || head_.head_size < fields_end_ + kLinkSize) return {};
  std::string link(kLinkSize, '\0');
  link.resize(file_.ReadAt(fields_end_, link));
  return page_.Decode(TrimView(link.substr(0, link.find('\0'))));
}

void TDbfFile::ReadFields() {
  std::string head(head_.head_size, '\0');
  head.resize(file_.ReadAt(0, head));
  // Its descriptors come later and are longer; here stands the end of a name. dBASE IV may have the same first byte.
  const std::size_t type_at = kHeadFixed + kTypeAt;
  if ((head_.version & 7) == 4 && head.size() > type_at && head[type_at] == '\0')
    RaiseDbfFault(Path(), 0, Format(kOtherLayout, "dBASE 7"));
  fields_end_ = kHeadFixed;
  while (fields_end_ + kDescriptor <= head.size() && head[fields_end_] != kEndOfFields) {
    AddField(head.data() + fields_end_);
    fields_end_ += kDescriptor;
  }
  if (fields_.empty()) RaiseDbfFault(Path(), kHeadFixed, kNoFields);
  ++fields_end_;
}

void TDbfFile::AddField(const char* descriptor) {
  const std::string_view name(descriptor, kNameSize);
  TDbfField field{.name = page_.Decode(TrimView(name.substr(0, name.find('\0')))),
                  .type = descriptor[kTypeAt],
                  .size = LittleAt<std::uint8_t>(descriptor + kSizeAt),
                  .decimals = LittleAt<std::uint8_t>(descriptor + kDecimalsAt)};
  if (field.name.empty()) RaiseDbfFault(Path(), fields_end_, Format(kNameless, fields_.size() + 1));
  if (head_.IsVisualFoxPro())
    field.flags = LittleAt<std::uint8_t>(descriptor + kFieldFlagsAt);
  else if (field.type == 'B')
    field.type = 'G';
  CheckWidth(Path(), fields_end_, field);
  if (field.type == '0') field.flags |= kDbfHidden;
  fields_.push_back(std::move(field));
}

// Where a field stands follows from the sizes; what the file says about it is an address in the memory of old programs.
void TDbfFile::PlaceFields() {
  const std::size_t end = Place(fields_);
  if (end > head_.record_size) RaiseDbfFault(Path(), kRecordSizeAt, Format(kRecordTooShort, head_.record_size, end));
  if (end == head_.record_size || head_.IsVisualFoxPro()) return;
  // Clipper keeps texts above 255 bytes by using the decimals as the high byte of the size.
  std::vector<TDbfField> wide = fields_;
  for (TDbfField& field : wide)
    if (field.type == 'C') field.size += std::size_t{field.decimals} * 256;
  if (Place(wide) == head_.record_size) fields_ = std::move(wide);
}

// A field of variable length has its length bit in front of its null bit. Some programs mark fields as nullable and
// write no null flags: no value is null then.
void TDbfFile::NumberBits() {
  const TDbfField* null_flags = NullFlags();
  const bool varies = std::ranges::any_of(fields_, [](const TDbfField& f) { return f.type == 'V' || f.type == 'Q'; });
  if (null_flags == nullptr && !varies) return;
  const int bits = null_flags == nullptr ? 0 : static_cast<int>(null_flags->size) * 8;
  int next = 0;
  for (TDbfField& field : fields_) {
    if (field.type == '0') continue;
    if (field.type == 'V' || field.type == 'Q') field.length_bit = next++;
    if (field.Is(kDbfNullable)) field.null_bit = next++;
    if (next > bits) RaiseDbfFault(Path(), kHeadFixed, Format(kNoNullFlags, field.name, bits));
  }
}

void TDbfFile::CheckRecords() const {
  const std::uint64_t room = file_.Size() - head_.head_size;
  if (std::uint64_t{head_.records} * head_.record_size > room)
    RaiseDbfFault(Path(), kRecordsAt, Format(kTooManyRecords, head_.records, head_.record_size, room));
}

bool TDbfRecords::Next() {
  const TDbfHead& head = file_.Head();
  if (number_ >= head.records) return false;
  at_ += head.record_size;
  if (number_ == 0 || at_ >= block_.size()) {
    const std::size_t in_block = std::max<std::size_t>(1, kBlockSize / head.record_size);
    block_.resize(std::min<std::size_t>(in_block, head.records - number_) * head.record_size);
    const std::uint64_t place = head.head_size + std::uint64_t{number_} * head.record_size;
    if (file_.File().ReadAt(place, block_) < block_.size())
      RaiseDbfFault(file_.Path(), place, Format(kCut, number_ + 1, head.records));
    at_ = 0;
  }
  ++number_;
  return true;
}

}  // namespace velmora
