// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/MySQLText.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

#include "util/Text.h"

namespace velmora {

namespace {

struct TStandIn {
  TNeutralType from;
  std::int64_t above;  // holds for sizes above this
  TNeutralType to;
  std::int64_t size;
  std::optional<std::int32_t> precision = std::nullopt;
};

constexpr std::int64_t kAnySize = std::numeric_limits<std::int64_t>::min();

// Deliberate: a double is written as a wide decimal, even one that came from MySQL itself.
constexpr TStandIn kStandIns[] = {
    {ntDouble, kAnySize, ntDecimal, 53, 4},
    {ntVarChar, 255, ntText, -1},
    {ntNVarChar, 255, ntText, -1},
    {ntUidMsSql, kAnySize, ntVarChar, 38},
    {ntMoneyMsSql, kAnySize, ntDecimal, 19, 4},
    {ntSmallMoneyMsSql, kAnySize, ntDecimal, 10, 4},
    {ntNTextMsSql, kAnySize, ntText, -1},
};

constexpr std::string_view kRefusedInNames = ".,#:'";

// What a character becomes within quotes; empty for one that stays itself.
std::string_view EscapeOf(char c) {
  switch (c) {
    case '\'':
      return "''";
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\0':
      return "\\0";
    case '\b':
      return "\\b";
    case '\t':
      return "\\t";
    case '\r':
      return "\\r";
    case '\n':
      return "\\n";
    default:
      return {};
  }
}

std::string WithCommas(std::string_view columns) { return StrReplace(columns, ";", ","); }

}  // namespace

std::string MySQLDateTimeLiteral(TDateTime value) {
  const std::string time = TimeText(value);
  return "'" + DateText(value) + (time == "00:00:00" ? "" : " " + time) + "'";
}

std::string MySQLEscaped(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char c : text) {
    const std::string_view escape = EscapeOf(c);
    if (escape.empty())
      escaped += c;
    else
      escaped += escape;
  }
  return escaped;
}

std::string MySQLNormalName(std::string_view name) {
  std::string normal(name);
  const auto refused = [](char c) { return kRefusedInNames.find(c) != std::string_view::npos; };
  std::replace_if(normal.begin(), normal.end(), refused, '_');
  return normal;
}

std::string MySQLColumnAttributes(const TMetaColumn& column, bool no_defaults) {
  std::string text;
  if (column.notnull) text += " not null";
  if (column.autoinc) text += " auto_increment";
  if (!no_defaults && !column.default_.empty()) text.append(" default ").append(column.default_);
  return text;
}

std::string MySQLForeignKey(const TMetaConstraint& constraint) {
  // Deliberate: neither names in quotes nor the rules; texts are compared in this form.
  return "constraint " + constraint.name + " foreign key(" + WithCommas(constraint.local_columns) + ") references " +
         constraint.foreign_table + "(" + WithCommas(constraint.foreign_columns) + ")";
}

TMetaColumn MySQLStandIn(const TMetaColumn& source) {
  TMetaColumn column = source;
  for (const TStandIn& row : kStandIns) {
    if (row.from != source.datatype || source.size <= row.above) continue;
    column.datatype = row.to;
    column.size = row.size;
    column.precision = row.precision.value_or(column.precision);
    break;
  }
  return column;
}

}  // namespace velmora
