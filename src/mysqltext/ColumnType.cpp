// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/ColumnType.h"

#include <algorithm>

#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/Lexer.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr long long kLargestSize = 1'000'000'000'000;  // more than any server has, and little enough for sums with it

std::vector<std::string> Arguments(TTokens tokens, TTokenRange range) {
  std::vector<std::string> result;
  for (std::size_t at = range.first; at < range.last; ++at) {
    const TToken& token = tokens[at];
    if (token.kind == EToken::String)
      result.push_back(ValueOf(token));
    else if (!token.Is(","))
      result.emplace_back(token.text);
  }
  return result;
}

std::optional<long long> NumberAt(const std::vector<std::string>& arguments, std::size_t place) {
  if (place >= arguments.size()) return std::nullopt;
  const std::optional<long long> number = TryStrToInt(arguments[place]);
  return number ? std::optional(std::min(*number, kLargestSize)) : std::nullopt;
}

}  // namespace

const TSizedType* SizedText(std::string_view type) {
  const auto* row = std::ranges::find(kSizedTypes, type, &TSizedType::text);
  return row == kSizedTypes.end() ? nullptr : row;
}

const TSizedType* SizedBlob(std::string_view type) {
  const auto* row = std::ranges::find(kSizedTypes, type, &TSizedType::blob);
  return row == kSizedTypes.end() ? nullptr : row;
}

TColumnText ReadColumnText(const TElementText& column, const TTableText& table) {
  return ReadColumnText(column, IsLetterType(column.Column().type) ? TableCharset(table) : TCharset());
}

TColumnText ReadColumnText(const TElementText& column, const TCharset& of_table) {
  const TColumnParts& parts = column.Column();

  TColumnText result;
  result.name = parts.name;
  result.type = parts.type;
  result.arguments = Arguments(column.Tokens(), parts.arguments);
  if (parts.is_boolean) result.arguments = {"1"};
  result.is_unsigned = parts.is_unsigned;
  result.zerofill = parts.zerofill;
  result.not_null = parts.not_null;
  result.auto_increment = parts.auto_increment;
  result.invisible = parts.invisible;
  result.stored = parts.stored;
  if (parts.default_value) result.default_text = column.Part(*parts.default_value);
  if (parts.generated) result.generated = column.Part(*parts.generated);
  if (IsLetterType(parts.type)) {
    const bool own = !parts.charset.empty() || !parts.collation.empty();
    result.charset = own ? NamedCharset(parts.charset, parts.collation) : of_table;
  }
  return result;
}

// Numbers and times, addresses of each type, and shapes are strangers to each other; letters and bytes are to nobody.
bool Converts(const TColumnText& from, const TColumnText& to) {
  const auto is_address = [](const std::string& type) { return InList(type, {"uuid", "inet6", "inet4"}); };
  if ((is_address(from.type) && to.type == "vector") || (from.type == "vector" && is_address(to.type))) return false;
  const auto family = [&is_address](const std::string& type) -> std::string {
    if (is_address(type)) return type;
    if (IsShapeType(type)) return "shape";
    const bool counts = IsNumberType(type) || IsTimeType(type) || InList(type, {"bit", "date", "year"});
    return counts ? "number" : "";
  };
  const std::string had = family(from.type);
  const std::string has = family(to.type);
  return had.empty() || has.empty() || had == has;
}

bool TColumnText::HasLetters() const { return IsLetterType(type); }

bool TColumnText::IsNumber() const { return IsNumberType(type); }

std::optional<long long> TColumnText::Length() const { return NumberAt(arguments, 0); }

std::optional<long long> TColumnText::Fraction() const { return NumberAt(arguments, IsTimeType(type) ? 0 : 1); }

}  // namespace velmora
