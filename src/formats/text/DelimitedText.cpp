// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/text/DelimitedText.h"

#include <algorithm>
#include <utility>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr std::size_t kSampleLines = 50;
constexpr std::int64_t kTextSize = 255;
constexpr char kInvalidValue[] = "Invalid value for %s/%s: %s";
constexpr char kUnhandledType[] = "Unhandled column type %s/%s";
constexpr char kNoMoment[] = "'%s' is not a valid date and time";
constexpr char kInColumn[] = "%s: line %d: column %s: %s";
constexpr char kNoColumn[] = "%s: line %d: value %d has no column";

bool IsQuoted(std::string_view text) { return text.size() > 2 && text.front() == '"' && text.back() == '"'; }

// Deliberate: the first and the last character go, whatever they are, so a text without quotes loses its ends.
std::string_view Unquoted(std::string_view text) {
  if (CharCount(text.substr(0, 8)) < 2) return {};
  text.remove_prefix(CharSize(text, 0));
  std::size_t last = std::min<std::size_t>(text.size(), 4);  // bytes of the last character
  while (CharSize(text, text.size() - last) != last) --last;
  return text.substr(0, text.size() - last);
}

TVariant MomentOf(std::string_view text) {
  const auto moment = TextToDateTime(text);
  if (!moment) throw EConvertError(Format(kNoMoment, text));
  return TMoment{*moment};
}

TVariant IntegerOf(std::string_view text) {
  const auto number = TextToInteger(text);
  if (!number) RaiseNoInteger(text);
  return std::int64_t{*number};
}

}  // namespace

TDelimitedText::TDelimitedText(std::string table, const std::string& path, std::string separator, bool hdr)
    : table_(std::move(table)), separator_(std::move(separator)), hdr_(hdr), lines_(path) {
  TStringList last_values;
  InferMarks(last_values);
  const TStringList names = ColumnNames(last_values);
  for (std::size_t i = 0; i < names.size(); ++i) fields_.push_back(FieldOf(i, names[i]));
}

void TDelimitedText::Split(std::size_t line, TStringList& values) const {
  SplitQuoted(separator_, lines_.Line(line), values);
}

// Marks every column; `last_values` gets the values of the last line that was looked at.
void TDelimitedText::InferMarks(TStringList& last_values) {
  Split(0, last_values);
  marks_.assign(last_values.size(), EMark::Blank);
  const std::size_t end = std::min(lines_.Count(), kSampleLines);
  for (std::size_t line = FirstRow(); line < end; ++line) {
    Split(line, last_values);
    for (std::size_t i = 0; i < last_values.size(); ++i) {
      if (last_values[i].empty()) continue;
      const EMark mark = MarkOf(last_values[i]);
      if (i >= marks_.size()) marks_.resize(i + 1, EMark::Unset);
      marks_[i] = mark;
    }
  }
}

// Deliberate: the value stands in the message twice, in the place of the column's name too.
TDelimitedText::EMark TDelimitedText::MarkOf(const std::string& value) const {
  if (IsQuoted(value)) return EMark::Quoted;
  if (TextToDateTime(value)) return EMark::DateTime;
  if (TryStrToFloat(value)) return EMark::Float;
  if (TextToInteger(value)) return EMark::Integer;
  RaiseError(Format(kInvalidValue, table_, value, value));
}

// Deliberate: without a line of names it is the last line of the sample that says how many columns there are.
TStringList TDelimitedText::ColumnNames(const TStringList& last_values) const {
  TStringList names;
  if (hdr_) {
    Split(0, names);
    for (std::string& name : names) name = RemoveChar(name, '"');
  } else {
    for (std::size_t i = 0; i < last_values.size(); ++i) names.push_back(Format("Column%d", i));
  }
  return names;
}

TFieldDef TDelimitedText::FieldOf(std::size_t column, const std::string& name) const {
  switch (column < marks_.size() ? marks_[column] : EMark::Unset) {
    case EMark::Blank:
    case EMark::Quoted:
      return {name, EFieldKind::String, kTextSize};
    case EMark::DateTime:
      return {name, EFieldKind::DateTime};
    case EMark::Float:
      return {name, EFieldKind::Float};
    case EMark::Integer:
      return {name, EFieldKind::Integer};
    case EMark::Unset:
      break;
  }
  RaiseError(Format(kUnhandledType, table_, name));
}

void TDelimitedText::ReadRows(const std::function<void(TMemDataset::TRow& row)>& take) const {
  TStringList values;
  TMemDataset::TRow row;
  for (std::size_t line = FirstRow(); line < lines_.Count(); ++line) {
    Split(line, values);
    if (values.size() > fields_.size()) RaiseError(Format(kNoColumn, table_, line + 1, fields_.size() + 1));
    row.resize(fields_.size());
    for (std::size_t i = 0; i < values.size(); ++i) row[i] = ValueOf(i, values[i], line);
    take(row);
    // What was set, if it is still there, goes: a wide first line would make clearing whole rows dear.
    std::fill_n(row.begin(), std::min(values.size(), row.size()), TVariant());
  }
}

TVariant TDelimitedText::ValueOf(std::size_t column, std::string_view text, std::size_t line) const {
  const EMark mark = marks_[column];
  if (mark == EMark::Blank) return std::string(text);
  if (mark == EMark::Quoted) return std::string(Unquoted(text));
  if (text.empty()) return {};
  try {
    if (mark == EMark::DateTime) return MomentOf(text);
    if (mark == EMark::Float) return StrToFloat(text);
    return IntegerOf(text);
  } catch (const EConvertError& error) {
    throw EConvertError(Format(kInColumn, table_, line + 1, fields_[column].name, error.what()));
  }
}

}  // namespace velmora
