// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/SheetTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <unordered_set>
#include <utility>

#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kScattered[] =
    "%d rows of %d columns hold no more than %d cells: delete the stray cells at the sheet's right or lower end";

constexpr std::uint32_t kDecidingRows = 8;
constexpr std::size_t kTextSize = 255;
constexpr std::size_t kNameSize = 64;
constexpr std::uint16_t kNumberPrecision = 15;

// Up to so many places a sheet may be as empty as it likes; beyond, one place in so many must hold something.
constexpr std::uint64_t kPlacesAtWill = 1U << 20U;
constexpr std::uint64_t kPlacesPerCell = 64;

bool ComesBefore(const TSheetCell& a, const TSheetCell& b) {
  return a.row != b.row ? a.row < b.row : a.column < b.column;
}

ESheetKind KindOf(const TVariant& value) {
  if (std::holds_alternative<double>(value)) return ESheetKind::Number;
  return std::holds_alternative<TMoment>(value) ? ESheetKind::Date : ESheetKind::Text;
}

// Day zero stands for no date at all.
std::string MomentText(TDateTime value) { return std::floor(value) == 0 ? TimeText(value) : DateTimeText(value); }

std::string TextOf(const TVariant& value) {
  const auto* moment = std::get_if<TMoment>(&value);
  return moment != nullptr ? MomentText(moment->value) : VarToText(value);
}

TVariant ValueFor(const TSheetColumn& column, const TVariant& value, bool everything_as_text) {
  if (KindOf(value) == column.kind) return value;
  if (column.kind == ESheetKind::Text && everything_as_text) return TextOf(value);
  return {};
}

// What the deciding rows hold of one column.
class TTally {
 public:
  void Add(const TVariant& value) {
    ++count_[static_cast<std::size_t>(KindOf(value))];
    if (CharCount(TextOf(value)) > kTextSize) ++long_;
  }
  ESheetKind Kind(bool mixed_as_text) const {
    const auto most = std::ranges::max_element(count_);  // of equal ones the first, in the order of the kinds
    const auto kinds = count_.size() - static_cast<std::size_t>(std::ranges::count(count_, 0U));
    if (kinds == 0 || (kinds > 1 && mixed_as_text)) return ESheetKind::Text;
    return static_cast<ESheetKind>(most - count_.begin());
  }
  bool IsLong() const { return long_ * 2 > count_[0] + count_[1] + count_[2]; }

 private:
  std::array<unsigned, 3> count_ = {};
  unsigned long_ = 0;
};

// How the schema and the rowset of the provider show a kind.
TOLEDBColumnRow ColumnRow(const TSheetColumn& column) {
  TOLEDBColumnRow row{.TABLE_NAME = {}, .COLUMN_NAME = column.name, .COLUMN_DEFAULT = {}};
  switch (column.kind) {
    case ESheetKind::Number:
      row.DATA_TYPE = kDbTypeR8;
      row.COLUMN_FLAGS = kColumnIsFixedLength;
      row.NUMERIC_PRECISION = kNumberPrecision;
      break;
    case ESheetKind::Date:
      row.DATA_TYPE = kDbTypeDate;
      row.COLUMN_FLAGS = kColumnIsFixedLength;
      break;
    case ESheetKind::Text:
      row.DATA_TYPE = kDbTypeWStr;
      row.COLUMN_FLAGS = column.is_long ? kColumnIsLong : 0;
      row.CHARACTER_MAXIMUM_LENGTH = column.is_long ? 0 : kTextSize;
      break;
  }
  row.COLUMN_FLAGS |= column.mixed;
  return row;
}

TFieldDef FieldOf(const TSheetColumn& column) {
  if (column.kind == ESheetKind::Number) return {column.name, EFieldKind::Float, 0};
  if (column.kind == ESheetKind::Date) return {column.name, EFieldKind::DateTime, 0};
  return column.is_long ? TFieldDef{column.name, EFieldKind::Memo, 0}
                        : TFieldDef{column.name, EFieldKind::WideString, kTextSize};
}

}  // namespace

std::string SheetWord(std::string_view text) {
  constexpr std::string_view kFrom = ".![]", kTo = "#_()";
  std::string word = CutChars(TrimView(text), kNameSize);
  for (char& c : word) {
    if (const std::size_t at = kFrom.find(c); at != std::string_view::npos) c = kTo[at];
    if (static_cast<unsigned char>(c) < ' ') c = '_';
  }
  return Trim(word);
}

void MakeDistinct(std::vector<std::string>& names) {
  std::unordered_set<std::string> all, taken;
  for (const std::string& name : names) all.insert(LowerText(name));
  for (std::string& name : names) {
    if (taken.insert(LowerText(name)).second) continue;
    std::string candidate;
    for (int number = 1; candidate.empty() || !all.insert(LowerText(candidate)).second; ++number)
      candidate = name + std::to_string(number);
    name = std::move(candidate);
  }
}

TSheetTable::TSheetTable(std::vector<TSheetCell> cells, TSheetRule rule) : cells_(std::move(cells)), rule_(rule) {
  if (!std::ranges::is_sorted(cells_, ComesBefore)) std::ranges::stable_sort(cells_, ComesBefore);
  const auto [left, right] = std::ranges::minmax(cells_, {}, &TSheetCell::column);
  first_column_ = left.column;
  columns_.resize(right.column - left.column + 1);
  first_row_ = cells_.front().row;
  end_row_ = cells_.back().row + 1;
  FindColumns();
}

void TSheetTable::FindColumns() {
  std::vector<std::string> names(columns_.size());
  std::size_t next = 0;
  if (rule_.names) {
    for (; next < cells_.size() && cells_[next].row == first_row_; ++next)
      names[cells_[next].column - first_column_] = SheetWord(TextOf(cells_[next].value));
    ++first_row_;
  }
  for (std::size_t i = 0; i < names.size(); ++i)
    if (names[i].empty()) names[i] = "F" + std::to_string(i + 1);
  MakeDistinct(names);

  std::vector<TTally> tallies(columns_.size());
  const std::size_t first = next;
  for (; next < cells_.size() && cells_[next].row - first_row_ < kDecidingRows; ++next)
    tallies[cells_[next].column - first_column_].Add(cells_[next].value);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const ESheetKind kind = tallies[i].Kind(rule_.mixed_as_text);
    columns_[i] = {std::move(names[i]), kind, kind == ESheetKind::Text && tallies[i].IsLong()};
  }
  for (next = first; next < cells_.size(); ++next) {
    TSheetColumn& column = columns_[cells_[next].column - first_column_];
    if (column.kind == ESheetKind::Text || KindOf(cells_[next].value) == column.kind) continue;
    column.mixed |= kColumnIsMixed;
    if (CharCount(TextOf(cells_[next].value)) > kTextSize) column.mixed |= kColumnIsMixedLong;
  }
}

TFileTable TSheetTable::Structure(const std::string& table) const {
  TFileTable structure;
  for (const TSheetColumn& column : columns_) {
    structure.columns.push_back(ColumnRow(column));
    structure.columns.back().TABLE_NAME = table;
    structure.columns.back().ORDINAL_POSITION = static_cast<std::uint32_t>(structure.columns.size());
    structure.fields.push_back(FieldOf(column));
  }
  structure.is_autoincrement.resize(columns_.size());
  return structure;
}

TRowsOfValues TSheetTable::Rows(std::int64_t limit) const {
  std::uint64_t count = end_row_ - first_row_;
  if (limit != kAllRows) count = std::min(count, static_cast<std::uint64_t>(limit));
  const std::uint64_t places = count * columns_.size();
  if (places > kPlacesAtWill && places / kPlacesPerCell > cells_.size())
    RaiseError(Format(kScattered, count, columns_.size(), cells_.size()));
  TRowsOfValues rows(count, TMemDataset::TRow(columns_.size()));
  for (const TSheetCell& cell : cells_) {
    if (cell.row < first_row_) continue;
    if (cell.row - first_row_ >= count) break;
    const std::size_t column = cell.column - first_column_;
    rows[cell.row - first_row_][column] = ValueFor(columns_[column], cell.value, rule_.mixed_as_text);
  }
  return rows;
}

}  // namespace velmora
