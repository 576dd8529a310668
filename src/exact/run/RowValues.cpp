// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/RowValues.h"

#include <algorithm>

#include "exact/compare/Safety.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ElementText.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

using EKind = TRowValue::EKind;

constexpr char kConverted[] = "column %s changes its type";
constexpr char kComputed[] = "the default of the new column %s is computed for each row";
constexpr char kNewColumn[] = "column %s is new";
constexpr char kArray[] = "it has several values for one row";
constexpr char kTooDeep[] = "column %s is computed of too much";

bool IsLiteral(const std::string& text) {
  const std::vector<TToken> tokens = Tokens(text);
  const std::size_t sign = TokenAt(tokens, 0).Is("-") || TokenAt(tokens, 0).Is("+") ? 1 : 0;
  const EToken kind = TokenAt(tokens, sign).kind;
  return tokens.size() == sign + 2 && (kind == EToken::String || kind == EToken::Number);
}

// How deep computed columns may be computed of each other, and how long what they come to may be.
constexpr int kDeepest = 20;
constexpr std::size_t kLongest = 65536;

// As a column of that type stores what is computed; as it is where nothing is lost with that, or no word says it.
std::string StoredAs(const TColumnText& column, const std::string& value) {
  if (IsWholeType(column.type)) return Format("cast(%s as %s)", value, column.is_unsigned ? "unsigned" : "signed");
  if (column.type == "decimal" || InList(column.type, {"date", "datetime", "time"})) {
    const std::string size = JoinList(column.arguments, ", ");
    return Format("cast(%s as %s)", value, size.empty() ? column.type : column.type + "(" + size + ")");
  }
  if (!column.HasLetters() || column.charset.charset.empty()) return value;
  const std::string collate = column.charset.collation.empty() ? "" : " collate " + column.charset.collation;
  return Format("convert(%s using %s)%s", value, column.charset.charset, collate);
}

TRowValue ComputedColumn(const TTableRows& table, const TColumnText& column, int depth) {
  const std::vector<TToken> tokens = Tokens(*column.generated);
  TRowValue value = ValueOfTokens(table, tokens, {0, tokens.size() - 1}, depth);
  if (value.kind == EKind::Stored) value.sql = StoredAs(column, value.sql);
  return value;
}

bool ComputesTheSame(const TColumnText* had, const TColumnText& has) {
  return had != nullptr && had->generated == has.generated && had->type == has.type &&
         had->arguments == has.arguments && had->is_unsigned == has.is_unsigned && had->charset == has.charset;
}

// What servers fill rows with where a column may not be null and has no default; empty where no short text says it.
std::string FillingOf(const TColumnText& column) {
  if (!column.not_null) return {};
  if (column.IsNumber()) return "0";
  return column.HasLetters() && !InList(column.type, {"enum", "set"}) ? "''" : "";
}

TRowValue NewColumn(const TColumnText& column) {
  if (column.auto_increment) return {EKind::Numbered, {}, {}};
  const std::string text = column.default_text.value_or("");
  if (text.empty()) return {column.not_null ? EKind::Constant : EKind::Null, FillingOf(column), {}};
  if (SameText(text, "null")) return {EKind::Null, {}, {}};
  // Bits are written as a text of bytes, which beside a number is read for its digits.
  if (IsLiteral(text)) return {EKind::Constant, column.type == "bit" ? "(" + text + " + 0)" : text, {}};
  if (PosNoCase("current_timestamp", text) == 1) return {EKind::Constant, {}, {}};
  return {EKind::Unknown, {}, Format(kComputed, column.name)};
}

// Text is compared by the collation that it will have, and so is what becomes text: a number beside letters is compared
// as a number.
std::string Converted(const std::string& name, const TColumnText& had, const TColumnText& has) {
  const bool converts = has.HasLetters() && (!had.HasLetters() || !SameCharset(had.charset, has.charset));
  return converts ? StoredAs(has, name) : name;
}

}  // namespace

const TChange* TTableRows::ColumnChange(const std::string& column) const {
  const auto found = std::ranges::find_if(changes, [&](const TChange* change) {
    return (change->action == saAddColumn || change->action == saModifyColumn) && SameText(change->item, column);
  });
  return found == changes.end() ? nullptr : *found;
}

std::string WhyUnknown(const TRowValue& value, const std::string& column) {
  return value.why.empty() ? Format(kNewColumn, column) : value.why;
}

TRowValue ValueOfTokens(const TTableRows& table, TTokens tokens, TTokenRange range, int depth) {
  std::string result;
  for (std::size_t at = range.first; at < range.last; ++at) {
    const bool spaced = at > range.first && tokens[at - 1].End() != tokens[at].start;
    result += spaced ? " " : "";
    const bool is_column = IsName(tokens[at]) && !TokenAt(tokens, at + 1).Is("(") &&
                           table.reference->Find(EElement::Column, NameOf(tokens[at])) != nullptr;
    if (!is_column) {
      result += tokens[at].text;
      continue;
    }
    const std::string column = NameOf(tokens[at]);
    const TRowValue value = ValueOfColumn(table, column, depth + 1);
    const bool is_null = value.kind == EKind::Null;
    if (!is_null && value.sql.empty()) return {EKind::Unknown, {}, WhyUnknown(value, column)};
    result += is_null ? "null" : value.sql;
    if (depth > kDeepest || result.size() > kLongest) return {EKind::Unknown, {}, Format(kTooDeep, column)};
  }
  return {EKind::Stored, "(" + result + ")", {}};
}

TRowValue ValueOfColumn(const TTableRows& table, const std::string& column, int depth) {
  const std::string name = QuotedName(column);
  const TChange* change = table.ColumnChange(column);
  if (change == nullptr || change->moved_only) return {EKind::Stored, name, {}};
  const TColumnText& has = *change->new_column;
  if (has.generated && !ComputesTheSame(change->old_column.get(), has)) return ComputedColumn(table, has, depth);
  if (change->action == saAddColumn) return NewColumn(has);
  if (!KeepsValues(*change->old_column, has)) return {EKind::Unknown, {}, Format(kConverted, column)};
  return {EKind::Stored, Converted(name, *change->old_column, has), {}};
}

TRowValue ValueOfPart(const TTableRows& table, const TKeyPart& part) {
  if (part.column.empty()) {  // an expression, after which a direction may stand
    const std::vector<TToken> tokens = Tokens(part.text);
    if (std::ranges::any_of(tokens, [](const TToken& token) { return IsKeyword(token, "array"); }))
      return {EKind::Unknown, {}, kArray};
    return ValueOfTokens(table, tokens, {0, std::min(AfterGroup(tokens, 0), tokens.size() - 1)});
  }
  TRowValue value = ValueOfColumn(table, part.column);
  if (value.kind == EKind::Stored && part.length > 0) value.sql = Format("left(%s, %d)", value.sql, part.length);
  return value;
}

bool HoldsOthers(const TTableRows& table, const TKeyPart& part) {
  const TTableRows as_they_are{table.reference, table.target, {}};
  const TRowValue value = ValueOfPart(table, part);
  const TRowValue now = ValueOfPart(as_they_are, part);
  if (value.kind == EKind::Stored) return value.sql != now.sql;
  if (value.kind != EKind::Unknown || now.kind != EKind::Stored) return false;
  // A column of another type is told of by itself.
  return part.column.empty() || table.ColumnChange(part.column)->new_column->generated.has_value();
}

}  // namespace velmora
