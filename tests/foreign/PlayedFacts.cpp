// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/PlayedFacts.h"

#include <algorithm>
#include <array>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

constexpr char kWish[] = "wish ";

enum class ENumbers { None, Digits, Length, Fraction };

struct TFamilyWord {
  const char* word;
  EFamily family;
  ENumbers numbers = ENumbers::None;
};

constexpr TFamilyWord kFamilies[] = {
    {"int8", EFamily::Int8},
    {"uint8", EFamily::UInt8},
    {"int16", EFamily::Int16},
    {"uint16", EFamily::UInt16},
    {"int32", EFamily::Int32},
    {"uint32", EFamily::UInt32},
    {"int64", EFamily::Int64},
    {"uint64", EFamily::UInt64},
    {"int128", EFamily::Int128},
    {"decimal", EFamily::Decimal, ENumbers::Digits},
    {"number", EFamily::Number},
    {"decfloat", EFamily::DecFloat},
    {"width", EFamily::FieldWidth, ENumbers::Digits},
    {"double", EFamily::Double},
    {"single", EFamily::Single},
    {"money", EFamily::Money},
    {"smallmoney", EFamily::SmallMoney},
    {"floatmoney", EFamily::FloatMoney},
    {"boolean", EFamily::Boolean},
    {"char", EFamily::Char, ENumbers::Length},
    {"varchar", EFamily::VarChar, ENumbers::Length},
    {"longtext", EFamily::LongText},
    {"guid", EFamily::Guid},
    {"variant", EFamily::Variant},
    {"rowid", EFamily::RowId},
    {"interval", EFamily::Interval},
    {"binary", EFamily::Binary, ENumbers::Length},
    {"varbinary", EFamily::VarBinary, ENumbers::Length},
    {"longbinary", EFamily::LongBinary},
    {"rowversion", EFamily::RowVersion},
    {"shape", EFamily::Shape},
    {"date", EFamily::Date},
    {"time", EFamily::Time, ENumbers::Fraction},
    {"datetime", EFamily::DateTime, ENumbers::Fraction},
    {"datetimezone", EFamily::DateTimeZone, ENumbers::Fraction},
    {"unknown", EFamily::Unknown},
};

struct TRuleWord {
  const char* word;
  EReferenceRule rule;
};
constexpr TRuleWord kRules[] = {{"cascade", EReferenceRule::Cascade},
                                {"restrict", EReferenceRule::Restrict},
                                {"setnull", EReferenceRule::SetNull},
                                {"setdefault", EReferenceRule::SetDefault}};

// What stands after " WORD " to the end, which is cut off there.
std::optional<std::string> TakeTail(std::string& text, const std::string& word) {
  const std::size_t at = text.find(" " + word + " ");
  if (at == std::string::npos) return std::nullopt;
  std::string tail = Trim(text.substr(at + word.size() + 2));
  text.resize(at);
  return tail;
}

bool TakeWord(std::string& text, const std::string& word) {
  if (!text.ends_with(" " + word)) return false;
  text = Trim(text.substr(0, text.size() - word.size()));
  return true;
}

TStringList Listed(const std::string& text) {
  TStringList list;
  SplitText(",", text, list);
  for (std::string& name : list) name = Trim(name);
  return list;
}

void SetNumbers(const std::string& text, ENumbers numbers, TForeignColumn& column) {
  TStringList parts = Listed(text);
  if (numbers == ENumbers::Digits) {
    column.precision = StrToInt(parts.at(0));
    if (parts.size() > 1) column.scale = StrToInt(parts[1]);
  } else if (numbers == ENumbers::Length) {
    column.in_bytes = text.ends_with("b");
    column.length = StrToInt64(TrimChar(parts.at(0), 'b'));
  } else {
    column.fraction = StrToInt(parts.at(0));
  }
}

EReferenceRule RuleNamed(const std::string& word) {
  const auto* row = std::ranges::find_if(kRules, [&](const TRuleWord& each) { return word == each.word; });
  return row == std::end(kRules) ? EReferenceRule::NoAction : row->rule;
}

TForeignReference ReadReference(std::string text) {
  TForeignReference reference;
  if (const auto rule = TakeTail(text, "update")) reference.on_update = RuleNamed(*rule);
  if (const auto rule = TakeTail(text, "delete")) reference.on_delete = RuleNamed(*rule);
  std::string parent = TakeTail(text, "to").value_or("");
  reference.name = StrChop(" ", text);
  reference.columns = Listed(text);
  reference.table = StrChop(" ", parent, true);
  if (!parent.empty()) reference.references = Listed(parent);
  return reference;
}

TForeignKey ReadKey(EForeignKeyKind kind, std::string text) {
  TForeignKey key{.name = StrChop(" ", text), .kind = kind};
  for (std::string column : Listed(text)) {
    const bool descending = TakeWord(column, "desc");
    key.parts.push_back({column, descending});
  }
  return key;
}

void ReadLine(std::string line, TForeignTable& table) {
  std::string rest = line;
  const std::string word = StrChop(" ", rest, true);
  if (word == "primary") return table.keys.push_back(ReadKey(EForeignKeyKind::Primary, rest));
  if (word == "unique") return table.keys.push_back(ReadKey(EForeignKeyKind::Unique, rest));
  if (word == "plain") return table.keys.push_back(ReadKey(EForeignKeyKind::Plain, rest));
  if (word == "reference") return table.references.push_back(ReadReference(rest));
  if (word == "problem") return void(table.problem = rest);
  if (word != "check") return table.columns.push_back(ReadColumnFacts(line));
  const std::size_t colon = rest.find(": ");
  TForeignCheck check{.text = rest};
  if (colon != std::string::npos) check = {.column = rest.substr(0, colon), .text = rest.substr(colon + 2)};
  check.name = Format("ck%d", table.checks.size() + 1);
  table.checks.push_back(check);
}

}  // namespace

TForeignColumn ReadColumnFacts(const std::string& text) {
  TForeignColumn column;
  std::string rest = text;
  column.default_text = TakeTail(rest, "default");
  if (const auto comment = TakeTail(rest, "comment")) column.comment = *comment;
  if (TakeWord(rest, "counts")) column.counting = ECounting::Counts;
  column.nullable = !TakeWord(rest, "not null");
  column.name = StrChop(" ", rest);
  std::string numbers = rest;
  column.native = StrChop("(", numbers, true);
  const auto* row =
      std::ranges::find_if(kFamilies, [&](const TFamilyWord& each) { return column.native == each.word; });
  if (row == std::end(kFamilies)) RaiseError("no family: " + text);
  column.family = row->family;
  if (rest.find('(') != std::string::npos) SetNumbers(TrimChar(numbers, ')'), row->numbers, column);
  return column;
}

std::vector<TForeignTable> ReadFacts(const std::string& text) {
  std::vector<TForeignTable> tables;
  TStringList lines;
  SplitText("\n", text, lines);
  for (std::string line : lines) {
    line = Trim(line);
    if (line.empty() || line.starts_with(kWish)) continue;
    if (!line.starts_with("table ")) {
      ReadLine(line, tables.at(tables.size() - 1));
      continue;
    }
    TForeignTable table;
    if (const auto comment = TakeTail(line, "comment")) table.comment = *comment;
    table.name = line.substr(6);
    tables.push_back(table);
  }
  return tables;
}

TForeignWishes ReadWishes(const std::string& text) {
  TStringList lines, wishes;
  SplitText("\n", text, lines);
  for (const std::string& line : lines)
    if (line.starts_with(kWish)) wishes.push_back(line.substr(std::size(kWish) - 1));
  return ReadForeignWishes(JoinList(wishes, "\n"));
}

TStringList TPlayedFacts::Tables() {
  TStringList names;
  for (const TForeignTable& table : tables_) names.push_back(table.name);
  return names;
}

TForeignTable TPlayedFacts::Table(const std::string& name) {
  for (const TForeignTable& table : tables_)
    if (table.name == name) return table;
  RaiseError("no table " + name);
}

}  // namespace velmora::testing
