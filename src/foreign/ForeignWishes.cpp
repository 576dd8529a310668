// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/ForeignWishes.h"

#include <algorithm>
#include <string_view>

#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/TableText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/OneLine.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoRule[] = "%s is no rule of the mapping: write TABLE.COLUMN=type, or a type of the source=type";
constexpr char kNoType[] = "%s: %s is no type of MySQL's";
constexpr char kNoCollation[] =
    "%s is no collation of utf8mb4, in which every letter has a place: write a name like utf8mb4_bin";
constexpr char kNoWish[] = "The task asks for \"%s\", which this version does not know";

constexpr char kMap[] = "map";
constexpr char kAccept[] = "accept";
constexpr char kNames[] = "names";
constexpr char kLower[] = "lower";
constexpr char kCollation[] = "collation";

struct TFlag {
  std::string_view word;
  bool TForeignWishes::*flag;
};
constexpr TFlag kFlags[] = {{"strict-types", &TForeignWishes::strict_types},
                            {"drop-obsolete", &TForeignWishes::drop_obsolete},
                            {"accept-timestamp", &TForeignWishes::accept_timestamp},
                            {"whole-numbers", &TForeignWishes::whole_numbers}};

bool TakeFlag(std::string_view word, TForeignWishes& wishes) {
  for (const TFlag& row : kFlags)
    if (row.word == word) return wishes.*row.flag = true;
  return false;
}

void ReadWish(std::string line, TForeignWishes& wishes) {
  const std::string whole = line;
  const std::string word = StrChop(" ", line, true);
  if (word == kMap)
    wishes.rules.push_back(ReadMapRule(line));
  else if (word == kAccept)
    wishes.accepted.push_back(line);
  else if (word == kNames && line == kLower)
    wishes.names = ENameCase::Lower;
  else if (word == kCollation)
    wishes.collation = ReadCollation(line);
  else if (!TakeFlag(whole, wishes))
    RaiseError(Format(kNoWish, whole));
}

// Without blanks, in lower case.
std::string RuleKey(const std::string& text) {
  std::string key = LowerText(OnOneLine(text));
  std::erase(key, ' ');
  return key;
}

// Whether it is a type that servers have, and nothing more than that.
bool IsType(const std::string& type) {
  try {
    const TTableText table = ReadTableText("create table t (`c` " + type + ")");
    const TColumnText column = ReadColumnText(table.elements.at(0).text, table);
    const TColumnParts& parts = table.elements[0].text.Column();
    const bool alone = table.elements.size() == 1 && !column.not_null && !column.auto_increment &&
                       !parts.default_value && !parts.generated && !parts.comment && parts.rest.empty();
    return alone && (column.IsNumber() || column.HasLetters() || IsTimeType(column.type) || IsShapeType(column.type) ||
                     InList(column.type, {"date", "year", "bit", "binary", "varbinary", "tinyblob", "blob",
                                          "mediumblob", "longblob", "json", "uuid", "inet6", "inet4", "vector"}));
  } catch (const EVelmora&) {
    return false;
  }
}

}  // namespace

// Names and types may have the sign in them, too.
TMapRule ReadMapRule(const std::string& text) {
  std::string unknown;
  for (std::size_t sign = text.find('='); sign != std::string::npos; sign = text.find('=', sign + 1)) {
    TMapRule rule = {OnOneLine(text.substr(0, sign)), OnOneLine(text.substr(sign + 1))};
    if (rule.what.empty() || rule.type.empty()) continue;
    if (IsType(rule.type)) return rule;
    if (unknown.empty()) unknown = rule.type;
  }
  RaiseError(unknown.empty() ? Format(kNoRule, text) : Format(kNoType, text, unknown));
}

std::string MapRuleText(const TMapRule& rule) { return rule.what + "=" + rule.type; }

const TMapRule* FindMapRule(const std::vector<TMapRule>& rules, const TStringList& names) {
  if (rules.empty()) return nullptr;
  for (const std::string& name : names) {
    const std::string key = RuleKey(name);
    for (const TMapRule& rule : rules)
      if (RuleKey(rule.what) == key) return &rule;
  }
  return nullptr;
}

bool SameElement(const std::string& a, const std::string& b) { return SameText(OnOneLine(a), OnOneLine(b)); }

std::string ReadCollation(const std::string& text) {
  std::string name = LowerText(Trim(text));
  const bool unicode = name.starts_with("utf8mb4_") || name.starts_with("uca1400_");
  const auto fits = [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_'; };
  if (!unicode || !std::ranges::all_of(name, fits)) RaiseError(Format(kNoCollation, text));
  return name;
}

std::string ForeignWishesText(const TForeignWishes& wishes) {
  TStringList lines;
  for (const TMapRule& rule : wishes.rules) lines.push_back(std::string(kMap) + " " + MapRuleText(rule));
  for (const std::string& element : wishes.accepted) lines.push_back(std::string(kAccept) + " " + OnOneLine(element));
  for (const TFlag& row : kFlags)
    if (wishes.*row.flag) lines.emplace_back(row.word);
  if (!wishes.collation.empty()) lines.push_back(std::string(kCollation) + " " + wishes.collation);
  if (wishes.names == ENameCase::Lower) lines.push_back(std::string(kNames) + " " + kLower);
  return JoinList(lines, "\n");
}

TForeignWishes ReadForeignWishes(const std::string& text) {
  TForeignWishes wishes;
  TStringList lines;
  SplitText("\n", text, lines);
  for (const std::string& line : lines)
    if (!Trim(line).empty()) ReadWish(Trim(line), wishes);
  return wishes;
}

TForeignWishes JoinWishes(TForeignWishes now, const TForeignWishes& kept) {
  now.rules.insert(now.rules.end(), kept.rules.begin(), kept.rules.end());
  now.accepted.insert(now.accepted.end(), kept.accepted.begin(), kept.accepted.end());
  for (const TFlag& row : kFlags) now.*row.flag = now.*row.flag || kept.*row.flag;
  if (now.collation.empty()) now.collation = kept.collation;
  if (now.names == ENameCase::Keep) now.names = kept.names;
  return now;
}

}  // namespace velmora
