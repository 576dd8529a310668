// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/BiffWorkbook.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <utility>

#include "formats/sheet/BiffRecords.h"
#include "formats/sheet/CellFormats.h"
#include "formats/sheet/SheetBudget.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoStart[] = "the workbook is damaged: it does not begin as one does";
constexpr char kOldSheet[] =
    "it is a sheet of Excel 4 or earlier. Open it in a spreadsheet program and save it as an "
    "Excel workbook (.xlsx or .xls)";
constexpr char kNoSheets[] = "the workbook is damaged: it names no sheets";
constexpr char kNoSheet[] = "the workbook is damaged: sheet \"%s\" is not where it should be";
constexpr char kNoText[] = "the workbook is damaged: sheet \"%s\" uses shared text %d of %d";
constexpr char kStray[] = "the workbook is damaged: sheet \"%s\" has a cell in column %d";
constexpr char kProtected[] =
    "the workbook is protected by a password. Open it in a spreadsheet program and save it without one";

constexpr std::uint32_t kMostColumns = 256;

// The kinds of records that matter here.
enum EKind : std::uint16_t {
  kFormula = 0x0006,
  kEnd = 0x000A,
  kDateMode = 0x0022,
  kPassword = 0x002F,
  kCodePage = 0x0042,
  kSheetName = 0x0085,
  kManyNumbers = 0x00BD,
  kRichLabel = 0x00D6,
  kStyle = 0x00E0,
  kSharedTexts = 0x00FC,
  kSharedLabel = 0x00FD,
  kNumber = 0x0203,
  kLabel = 0x0204,
  kTruthOrFault = 0x0205,
  kFormulaText = 0x0207,
  kShortNumber = 0x027E,
  kFormulaOfBiff4 = 0x0406,
  kPattern = 0x041E,
  kBegin = 0x0809,
};

constexpr std::uint16_t kBiff8 = 0x0600;
constexpr std::uint8_t kWorksheet = 0;  // among the sheets that the workbook names
constexpr unsigned kUnstatedPage = 1252;

struct TPlace {
  std::uint32_t row, column;
  std::size_t style;
};

TPlace PlaceOf(TBiffReader& reader) {
  const std::uint32_t row = reader.Word();
  const std::uint32_t column = reader.Word();
  return {row, column, reader.Word()};
}

// A number in four bytes: a whole number or the upper half of one with a fraction, and whether it is to be divided
// by 100.
double ShortNumber(std::uint32_t bits) {
  const bool hundredth = (bits & 1U) != 0, whole = (bits & 2U) != 0;
  const double number = whole ? static_cast<double>(static_cast<std::int32_t>(bits) >> 2)
                              : std::bit_cast<double>(static_cast<std::uint64_t>(bits & ~3U) << 32U);
  return hundredth ? number / 100 : number;
}

// --- What the workbook says for all its sheets

struct TSheetEntry {
  std::string name;
  std::uint32_t at = 0;
};

struct TBook {
  bool is_biff8 = false;
  TCodePage page = BiffCodePage(kUnstatedPage);
  TCellFormats formats;
  std::vector<std::string> texts;   // shared
  std::vector<TSheetEntry> sheets;  // worksheets alone
  bool names_sheets = false;
  TSheetBudget budget;

  std::string Text(TBiffReader& reader) const { return is_biff8 ? reader.WideText() : reader.PlainText(page); }
  std::string ShortText(TBiffReader& reader) const {
    return is_biff8 ? reader.ShortWideText() : reader.ShortPlainText(page);
  }
};

void TakePage(TBook& book, TBiffReader& reader) { book.page = BiffCodePage(reader.Word()); }

void TakeDateMode(TBook& book, TBiffReader& reader) {
  if (reader.Word() != 0) book.formats.CountFrom1904();
}

// Programs are known that write it shorter than they say. Then the format is that of its number.
void TakePattern(TBook& book, TBiffReader& reader) {
  const unsigned format = reader.Word();
  try {
    book.formats.AddPattern(format, book.is_biff8 ? reader.WideText() : reader.ShortPlainText(book.page));
  } catch (const EVelmora&) {
    return;
  }
}

void TakeStyle(TBook& book, TBiffReader& reader) {
  reader.Skip(sizeof(std::uint16_t));  // its font
  book.formats.AddStyle(reader.Word());
}

void TakeSheet(TBook& book, TBiffReader& reader) {
  const std::uint32_t at = reader.Long();
  reader.Skip(1);  // whether it is hidden
  const std::uint8_t kind = reader.Byte();
  book.names_sheets = true;
  if (kind == kWorksheet) book.sheets.push_back({book.ShortText(reader), at});
}

// Their number may be wrong. Whether one is missing is known when a cell uses it.
void TakeSharedTexts(TBook& book, TBiffReader& reader) {
  reader.Skip(sizeof(std::uint32_t));  // how many cells use them
  const std::uint32_t count = reader.Long();
  for (std::uint32_t i = 0; i < count && !reader.AtEnd(); ++i) book.texts.push_back(reader.WideText());
}

[[noreturn]] void RefusePassword(TBook& /*book*/, TBiffReader& /*reader*/) { RaiseError(kProtected); }

struct TBookRecord {
  std::uint16_t kind;
  void (*take)(TBook& book, TBiffReader& reader);
};
constexpr TBookRecord kBookRecords[] = {
    {kPassword, RefusePassword}, {kCodePage, TakePage},   {kDateMode, TakeDateMode},       {kPattern, TakePattern},
    {kStyle, TakeStyle},         {kSheetName, TakeSheet}, {kSharedTexts, TakeSharedTexts},
};

TBook ReadBook(std::string_view stream) {
  TBiffRecords records(stream);
  const TBiffRecord begin = records.Next();
  if (begin.kind == 0x0009 || begin.kind == 0x0209 || begin.kind == 0x0409) RaiseError(kOldSheet);
  if (begin.kind != kBegin) RaiseError(kNoStart);
  TBook book;
  book.is_biff8 = TBiffReader(records, begin.data).Word() == kBiff8;
  for (TBiffRecord record = records.Next(); record.kind != kEnd; record = records.Next()) {
    const auto* row = std::ranges::find(kBookRecords, record.kind, &TBookRecord::kind);
    if (row == std::end(kBookRecords)) continue;
    TBiffReader reader(records, record.data);
    row->take(book, reader);
  }
  if (!book.names_sheets) RaiseError(kNoSheets);
  return book;
}

// --- One sheet

class TSheetRecords {
 public:
  TSheetRecords(TBook& book, const TSheetEntry& entry, std::string_view stream)
      : book_(book), records_(stream, entry.at), sheet_{.name = entry.name} {}

  TSheet Read();

 private:
  void Begin();
  void Take(const TBiffRecord& record);
  void TakeNumber(TBiffReader& reader);
  void TakeShortNumber(TBiffReader& reader);
  void TakeManyNumbers(TBiffReader& reader, std::size_t size);
  void TakeLabel(TBiffReader& reader);
  void TakeSharedLabel(TBiffReader& reader);
  void TakeTruth(TBiffReader& reader);
  void TakeFormula(TBiffReader& reader);
  void TakeFormulaText(TBiffReader& reader);
  void Put(const TPlace& place, TVariant value);
  void PutNumber(const TPlace& place, double number) { Put(place, book_.formats.Value(number, place.style)); }
  void PutText(const TPlace& place, std::string text) {
    if (!text.empty()) Put(place, std::move(text));
  }

  TBook& book_;
  TBiffRecords records_;
  TSheet sheet_;
  std::optional<TPlace> formula_;  // whose text a record of its own will hold
};

void TSheetRecords::Begin() {
  const TBiffRecord begin = records_.Next();
  if (begin.kind != kBegin) RaiseError(Format(kNoSheet, sheet_.name));
}

// Charts within the sheet are parts like the sheet itself, and have cells of their own.
TSheet TSheetRecords::Read() {
  Begin();
  for (int depth = 1; depth > 0;) {
    const TBiffRecord record = records_.Next();
    if (record.kind == kBegin) ++depth;
    if (record.kind == kEnd) --depth;
    if (depth == 1) Take(record);
  }
  return std::move(sheet_);
}

void TSheetRecords::Take(const TBiffRecord& record) {
  TBiffReader reader(records_, record.data);
  switch (record.kind) {
    case kNumber:
      return TakeNumber(reader);
    case kShortNumber:
      return TakeShortNumber(reader);
    case kManyNumbers:
      return TakeManyNumbers(reader, record.data.size());
    case kLabel:
    case kRichLabel:
      return TakeLabel(reader);
    case kSharedLabel:
      return TakeSharedLabel(reader);
    case kTruthOrFault:
      return TakeTruth(reader);
    case kFormula:
    case kFormulaOfBiff4:
      return TakeFormula(reader);
    case kFormulaText:
      return TakeFormulaText(reader);
    default:
      return;
  }
}

void TSheetRecords::Put(const TPlace& place, TVariant value) {
  formula_.reset();
  if (place.column >= kMostColumns) RaiseError(Format(kStray, sheet_.name, place.column + 1));
  if (VarIsNull(value)) return;
  book_.budget.Take(value);
  sheet_.cells.push_back({place.row, place.column, std::move(value)});
}

void TSheetRecords::TakeNumber(TBiffReader& reader) {
  const TPlace place = PlaceOf(reader);
  PutNumber(place, reader.Float());
}

void TSheetRecords::TakeShortNumber(TBiffReader& reader) {
  const TPlace place = PlaceOf(reader);
  PutNumber(place, ShortNumber(reader.Long()));
}

// A row, its first column, then a style and a number for each cell. The last column follows, but the size says it too.
void TSheetRecords::TakeManyNumbers(TBiffReader& reader, std::size_t size) {
  constexpr std::size_t kAround = 6, kEach = 6;
  const std::uint32_t row = reader.Word();
  std::uint32_t column = reader.Word();
  for (std::size_t left = size < kAround ? 0 : (size - kAround) / kEach; left > 0; --left, ++column) {
    const std::size_t style = reader.Word();
    PutNumber({row, column, style}, ShortNumber(reader.Long()));
  }
}

void TSheetRecords::TakeLabel(TBiffReader& reader) {
  const TPlace place = PlaceOf(reader);
  PutText(place, book_.Text(reader));
}

void TSheetRecords::TakeSharedLabel(TBiffReader& reader) {
  const TPlace place = PlaceOf(reader);
  const std::uint32_t number = reader.Long();
  if (number >= book_.texts.size()) RaiseError(Format(kNoText, sheet_.name, number, book_.texts.size()));
  PutText(place, book_.texts[number]);
}

void TSheetRecords::TakeTruth(TBiffReader& reader) {
  const TPlace place = PlaceOf(reader);
  const std::uint8_t value = reader.Byte();
  if (const bool is_fault = reader.Byte() != 0; !is_fault) Put(place, value != 0 ? 1.0 : 0.0);
}

// The last value: a number, or, where its upper bytes make it none, a kind and what belongs to it.
void TSheetRecords::TakeFormula(TBiffReader& reader) {
  enum : std::uint8_t { kText = 0, kTruth = 1 };
  constexpr std::uint64_t kNoNumber = 0xFFFF;
  const TPlace place = PlaceOf(reader);
  const double number = reader.Float();
  const auto bits = std::bit_cast<std::uint64_t>(number);
  const auto kind = static_cast<std::uint8_t>(bits);
  formula_.reset();
  if (bits >> 48U != kNoNumber) return PutNumber(place, number);
  if (kind == kText) formula_ = place;
  if (kind == kTruth) Put(place, (bits >> 16U & 0xFFU) != 0 ? 1.0 : 0.0);
}

void TSheetRecords::TakeFormulaText(TBiffReader& reader) {
  if (!formula_) return;
  const TPlace place = *formula_;
  PutText(place, book_.Text(reader));
}

}  // namespace

std::vector<TSheet> ReadBiffWorkbook(std::string_view stream) {
  TBook book = ReadBook(stream);
  std::vector<TSheet> sheets;
  for (const TSheetEntry& entry : book.sheets) sheets.push_back(TSheetRecords(book, entry, stream).Read());
  return sheets;
}

}  // namespace velmora
