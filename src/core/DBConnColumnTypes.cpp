// SPDX-License-Identifier: GPL-3.0-or-later

// Column types as texts: the operations of TDBConn that work over the engine's type table.

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

#include "core/ColumnTypes.h"
#include "core/DBConn.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

// Whether a length lies in the length range of a row. Deliberate: the lower bound alone says whether there is a range
// at all, so a row without one takes any length, whatever its upper bound says ("binary" of the generic table). An
// unstated length lies below every bound.
bool LengthFits(const TColumnTypeInfo& row, TNumber length) {
  if (row.min_length == kNoBound) return true;
  return length && *length >= row.min_length && *length <= row.max_length;
}

// Whether a precision lies in the precision range of a row, where either end may be open.
bool PrecisionFits(const TColumnTypeInfo& row, TNumber precision) {
  const bool above = row.min_precision == kNoBound || (precision && *precision >= row.min_precision);
  const bool below = row.max_precision == kNoBound || !precision || *precision <= row.max_precision;
  return above && below;
}

// Built by hand: this runs for every column that is compared.
std::string WithNumber(std::string_view word, std::int64_t number) {
  std::string text(word);
  return text.append("(").append(std::to_string(number)).append(")");
}

// The word with its numbers. "(0,0)" and "(0)" stand for a column whose numbers were never stated; they are left out.
std::string WordWithPrecision(const TColumnTypeInfo& row, const TMetaColumn& column) {
  if (row.has_scale) {
    if (column.size == 0 && column.precision == 0) return std::string(row.name);
    return Format("%s(%d,%d)", row.name, column.size, column.precision);
  }
  return column.size == 0 ? std::string(row.name) : WithNumber(row.name, column.size);
}

// What one row of the table makes of a column of its type; nothing when the next row shall be asked.
std::optional<std::string> WriteByRow(const TColumnTypeInfo& row, const TMetaColumn& column, bool detailed) {
  if (row.has_length) {
    if (!LengthFits(row, column.size)) return std::nullopt;
    return detailed ? WithNumber(row.name, column.size) : std::string(row.name);
  }
  if (row.has_precision) {
    if (PrecisionFits(row, column.size)) return detailed ? WordWithPrecision(row, column) : std::string(row.name);
    if (column.size != 0 || row.size_required) return std::nullopt;
  }
  // A row without numbers takes every size. So the first row of a family is what gets written, which is the widest
  // word where a table puts that first: nothing can be lost.
  return std::string(row.name);
}

// Whether `aliases`, joined by ";", hold `word`, ignoring case. Runs once per column read, hence without a list.
bool HoldsAlias(std::string_view aliases, std::string_view word) {
  while (!aliases.empty()) {
    const std::size_t end = aliases.find(';');
    if (SameText(aliases.substr(0, end), word)) return true;
    if (end == std::string_view::npos) return false;
    aliases.remove_prefix(end + 1);
  }
  return false;
}

// Deliberate: the name of a row is compared exactly, its aliases are not.
const TColumnTypeInfo& RowOfWord(TColumnTypeInfoArray table, const std::string& word) {
  const auto row = std::find_if(table.begin(), table.end(), [&word](const TColumnTypeInfo& each) {
    return each.name == word || (!each.aliases.empty() && HoldsAlias(each.aliases, word));
  });
  if (row == table.end()) RaiseError("TDBConn.DecodeColumn: Unhandled column type " + word);
  return *row;
}

// Takes the next word off `text`; blanks inside quotes belong to it. Empty at the end.
std::string_view TakeWord(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  char quote = '\0';
  std::size_t end = 0;
  for (; end < text.size() && (quote != '\0' || text[end] != ' '); ++end) {
    const char c = text[end];
    if (quote == c)
      quote = '\0';
    else if (quote == '\0' && (c == '\'' || c == '"'))
      quote = c;
  }
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(end);
  return word;
}

// Whether "not null" stands among the words after the type. Deliberate: not as the first two of them. After brackets
// the ")" is the first word, so «varchar(10) not null» says it and «text not null» does not.
bool SaysNotNull(std::string_view text) {
  text = TrimView(text);
  TakeWord(text);
  std::string_view before;
  while (!text.empty()) {
    const std::string_view word = TakeWord(text);
    if (SameText(before, "not") && SameText(word, "null")) return true;
    before = word;
  }
  return false;
}

// The numbers between the brackets of a type, into `size` and, when there is a second one, `precision`.
void ReadNumbers(std::string_view arguments, TMetaColumn& column) {
  const std::size_t comma = arguments.find(',');
  column.size = StrToInt64(TrimView(arguments.substr(0, comma)));
  if (comma == std::string_view::npos) return;
  const std::string_view rest = TrimView(arguments.substr(comma + 1));
  if (!rest.empty()) column.precision = StrToInt(rest);
}

// Takes the type word and its numbers off the text. After brackets the rest begins with the ")".
std::string TakeType(std::string_view& text, TMetaColumn& column) {
  const std::size_t open = text.find('(');
  const std::size_t close = open == std::string_view::npos ? open : text.find(')', open);
  if (close != std::string_view::npos) {
    std::string word(text.substr(0, open));
    ReadNumbers(text.substr(open + 1, close - open - 1), column);
    text.remove_prefix(close);
    return word;
  }
  const std::size_t blank = std::min(text.find(' '), text.size());
  std::string word(text.substr(0, blank));
  text.remove_prefix(blank);
  return word;
}

// The size tests of ConvertColumn. A size of 0 or less is not known and passes every row.
bool TakesSize(const TColumnTypeInfo& row, std::int64_t size) {
  if (size <= 0) return true;
  return (!row.has_length || LengthFits(row, size)) && (!row.has_precision || PrecisionFits(row, size));
}

}  // namespace

void TDBConn::GetColumnTypes(TColumnTypeInfoArray& table) { table = GenericColumnTypes(); }

void TDBConn::GetColumnTypeNames(TStringList& list) {
  TColumnTypeInfoArray table;
  GetColumnTypes(table);
  list.clear();
  for (const TColumnTypeInfo& row : table) list.emplace_back(row.name);
  std::sort(list.begin(), list.end(),
            [](const std::string& a, const std::string& b) { return LowerText(a) < LowerText(b); });
}

void TDBConn::ColumnTypeInfo(TNeutralType datatype, TColumnTypeInfo& row) {
  TColumnTypeInfoArray table;
  GetColumnTypes(table);
  for (const TColumnTypeInfo& each : table) {
    if (!each.Writes(datatype)) continue;
    row = each;
    return;
  }
  RaiseError("TDBConn.ColumnTypeInfo: Unhandled type");
}

void TDBConn::ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) {
  TColumnTypeInfoArray table;
  GetColumnTypes(table);
  if (table.empty()) {
    if (column.datatype > ntUnknown) RaiseError("TDBConn.ColumnDescription: unhandled datatype");
    text = NeutralTag(column.datatype);
    return;
  }
  for (const TColumnTypeInfo& row : table) {
    if (!row.Writes(column.datatype)) continue;
    if (std::optional<std::string> written = WriteByRow(row, column, detailed)) {
      text = std::move(*written);
      return;
    }
  }
  RaiseError(Format("TDBConn.ColumnDescription: Unhandled column type %d for column %s/%s",
                    static_cast<int>(column.datatype), column.table, column.name));
}

// Without brackets in the text, the table is asked with the size and precision that the record came with. A word that
// carries no numbers in the table drops them, stated or not: the record of «int(11)» has size 0.
void TDBConn::ParseColumnDescription(const std::string& text, TMetaColumn& column) {
  std::string_view rest = text;
  const std::string word = TakeType(rest, column);
  column.notnull = SaysNotNull(rest);
  TNumber length, precision, scale;
  DecodeColumn(word, column.size, column.size, column.precision, column.datatype, length, precision, scale);
  column.size = length ? *length : precision.value_or(0);
  column.precision = static_cast<std::int32_t>(scale.value_or(0));
}

void TDBConn::DecodeColumn(const std::string& type_name, TNumber length, TNumber precision, TNumber scale,
                           TNeutralType& datatype, TNumber& out_length, TNumber& out_precision, TNumber& out_scale) {
  TColumnTypeInfoArray table;
  GetColumnTypes(table);
  const TColumnTypeInfo& row = RowOfWord(table, type_name);
  datatype = row.datatype;
  out_length = out_precision = out_scale = std::nullopt;
  if (row.has_length && LengthFits(row, length)) {
    out_length = length;
  } else if (row.has_precision && PrecisionFits(row, precision)) {
    out_precision = precision;
    if (!row.has_scale)
      out_scale = 0;
    else if (scale)
      out_scale = std::abs(*scale);
    if (out_scale.value_or(0) > 0) datatype = ntDecimal;
  }
}

// Deliberate: the last row that passes gives the description, not the first; and the datatype becomes that of each row
// which writes the type, before its sizes are tested, even if it fails them.
void TDBConn::ConvertColumn(const TMetaColumn& source, TMetaColumn& column) {
  TColumnTypeInfoArray table;
  GetColumnTypes(table);
  TMetaColumn converted = source;
  converted.description.clear();
  for (const TColumnTypeInfo& row : table) {
    if (!row.Writes(source.datatype)) continue;
    converted.datatype = row.datatype;
    if (TakesSize(row, source.size)) ColumnDescription(converted, false, converted.description);
  }
  if (converted.description.empty()) {
    ColumnDescription(converted, false, converted.description);  // its own error tells more
    RaiseError(Format("TDBConn.ConvertColumn: Unhandled column type for column %s/%s", source.table, source.name));
  }
  column = std::move(converted);
}

}  // namespace velmora
