// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/TriggerText.h"

#include <algorithm>
#include <map>
#include <utility>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoSuchTrigger[] = "it %s %s, which does not fire with it";
constexpr char kCircle[] = "it %s %s, which is to stand beside it in turn, or beside one that cannot be made";

// In some modes names stand in double quotes.
bool MayBeName(const TToken& token) {
  return IsName(token) || (token.kind == EToken::String && token.text.starts_with('"'));
}

std::string NameIn(const TToken& token) { return token.kind == EToken::String ? ValueOf(token) : NameOf(token); }

std::optional<TTriggerHead> ReadHead(TTokens tokens) {
  std::size_t at = 1;
  while (at < tokens.size() && !IsKeyword(tokens[at - 1], "trigger")) ++at;
  if (IsKeyword(TokenAt(tokens, at), "if")) at += 3;  // not exists
  TTriggerHead head;
  std::string name;
  const std::optional<std::size_t> moment = AfterName(tokens, at, name);
  if (!moment || !TokenAt(tokens, *moment + 2).Is("on")) return std::nullopt;
  head.moment = LowerText(tokens[*moment].text) + " " + LowerText(tokens[*moment + 1].text);
  const std::size_t table = *moment + 3;
  const std::optional<std::size_t> each = AfterName(tokens, table, head.table);
  if (!each || !TokenAt(tokens, *each).Is("for")) return std::nullopt;
  head.table_start = tokens[table].start;
  head.table_end = tokens[*each - 1].End();
  const std::size_t order = *each + 3;
  if (TokenAt(tokens, order).Is("follows") || TokenAt(tokens, order).Is("precedes")) {
    head.order = LowerText(tokens[order].text);
    AfterName(tokens, order + 1, head.other);
  }
  return head;
}

struct TTrigger {
  TOtherObject* object;
  TTriggerHead head;
};
using TGroup = std::vector<TTrigger>;  // that fire together

TGroup::iterator FindTrigger(TGroup& group, const std::string& name) {
  return std::ranges::find_if(group, [&name](const TTrigger& one) { return SameText(one.object->name, name); });
}

// Whether it stands in its place now.
bool TakePlace(const TTrigger& trigger, TGroup& placed) {
  if (trigger.head.order.empty()) {
    placed.push_back(trigger);
    return true;
  }
  const auto other = FindTrigger(placed, trigger.head.other);
  if (other == placed.end()) return false;
  placed.insert(trigger.head.order == "follows" ? other + 1 : other, trigger);
  return true;
}

void PlaceGroup(TGroup waiting) {
  TGroup placed;
  for (bool goes_on = true; goes_on;)
    goes_on = std::erase_if(waiting, [&placed](const TTrigger& one) { return TakePlace(one, placed); }) > 0;
  for (std::size_t i = 0; i < placed.size(); ++i) placed[i].object->order = static_cast<int>(i) + 1;
  for (const TTrigger& one : waiting) {
    const bool there = FindTrigger(waiting, one.head.other) != waiting.end();
    one.object->text.clear();
    one.object->unread = Format(there ? kCircle : kNoSuchTrigger, one.head.order, one.head.other);
  }
}

// --- Tables

// The name at `at`, which goes on to what is after it.
TTableFate ReadTable(TTokens tokens, std::size_t& at) {
  if (IsKeyword(TokenAt(tokens, at), "if")) at += IsKeyword(TokenAt(tokens, at + 1), "not") ? 3U : 2U;
  TTableFate fate;
  if (TokenAt(tokens, at + 1).Is(".") && MayBeName(TokenAt(tokens, at))) fate.database = NameIn(tokens[at]);
  at = AfterName(tokens, at, fate.table).value_or(tokens.size());
  return fate;
}

// drop table a, b
void ReadDropped(TTokens tokens, std::size_t at, std::vector<TTableFate>& fates) {
  do {
    fates.push_back(ReadTable(tokens, at));
  } while (TokenAt(tokens, at++).Is(","));
}

// rename table a to b, c wait 5 to d
void ReadRenamed(TTokens tokens, std::size_t at, std::vector<TTableFate>& fates) {
  do {
    fates.push_back(ReadTable(tokens, at));
    while (at < tokens.size() && !tokens[at].Is("to")) ++at;
    fates.back().renamed = ReadTable(tokens, ++at).table;
  } while (TokenAt(tokens, at++).Is(","));
}

// alter table a add b int, rename to c
void ReadAltered(TTokens tokens, std::size_t at, std::vector<TTableFate>& fates) {
  TTableFate fate = ReadTable(tokens, at);
  for (bool begins = true; at + 1 < tokens.size(); at = AfterValue(tokens, at)) {
    if (std::exchange(begins, tokens[at].Is(",")) && IsKeyword(tokens[at], "rename")) {
      const TToken& next = tokens[at + 1];
      const bool word = next.Is("to") || next.Is("as") || next.Is("=");
      if (!word && (next.Is("column") || next.Is("index") || next.Is("key"))) continue;
      std::size_t name = at + (word ? 2 : 1);
      fate.renamed = ReadTable(tokens, name).table;
    }
  }
  if (!fate.renamed.empty()) fates.push_back(std::move(fate));
}

std::vector<TTableFate> ReadFates(TTokens tokens) {
  std::vector<TTableFate> fates;
  const auto is_table = [&](std::size_t at) {
    return TokenAt(tokens, at).Is("table") || TokenAt(tokens, at).Is("tables");
  };
  if (tokens[0].Is("drop") && is_table(1)) ReadDropped(tokens, 2, fates);
  if (tokens[0].Is("rename") && is_table(1)) ReadRenamed(tokens, 2, fates);
  if (tokens[0].Is("create") && TokenAt(tokens, 2).Is("replace") && is_table(3)) {
    std::size_t name = 4;
    fates.push_back(ReadTable(tokens, name));
  }
  std::size_t altered = 1;
  while (tokens[0].Is("alter") && altered < 4 && !is_table(altered)) ++altered;  // online, ignore
  if (tokens[0].Is("alter") && is_table(altered)) ReadAltered(tokens, altered + 1, fates);
  return fates;
}

}  // namespace

std::optional<std::size_t> AfterName(TTokens tokens, std::size_t at, std::string& name) {
  for (; MayBeName(TokenAt(tokens, at)); at += 2) {
    name = NameIn(tokens[at]);
    if (!TokenAt(tokens, at + 1).Is(".")) return at + 1;
  }
  return std::nullopt;
}

std::vector<TTableFate> FatesOfTables(std::string_view statement) {
  try {
    return ReadFates(Tokens(statement));
  } catch (const EVelmora&) {  // who reads its tables tells
    return {};
  }
}

std::string MovedTrigger(std::string_view text, const TTriggerHead& head, const std::string& table) {
  return std::string(text.substr(0, head.table_start)) + QuotedName(table) + std::string(text.substr(head.table_end));
}

std::optional<TTriggerHead> ReadTriggerHead(std::string_view text) {
  try {
    return ReadHead(Tokens(text));
  } catch (const EVelmora&) {  // who reads the whole of it tells
    return std::nullopt;
  }
}

void PlaceTriggers(std::vector<TOtherObject>& objects) {
  std::map<std::pair<std::string, std::string>, TGroup> groups;
  for (TOtherObject& object : objects) {
    if (object.kind != "trigger") continue;
    if (std::optional<TTriggerHead> head = ReadTriggerHead(object.text)) {
      TGroup& group = groups[{head->table, head->moment}];
      group.push_back({&object, std::move(*head)});
    }
  }
  for (auto& [moment, group] : groups) PlaceGroup(std::move(group));
}

}  // namespace velmora
