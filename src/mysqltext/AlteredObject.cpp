// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/AlteredObject.h"

#include <algorithm>
#include <initializer_list>
#include <set>
#include <utility>
#include <vector>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/TriggerText.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

bool IsAnyOf(const TToken& token, std::initializer_list<std::string_view> words) {
  return std::ranges::any_of(words, [&token](std::string_view word) { return IsKeyword(token, word); });
}

// The place of the first such word from `at` on; that of End for none.
std::size_t FindWord(TTokens tokens, std::size_t at, std::string_view word) {
  while (at + 1 < tokens.size() && !IsKeyword(tokens[at], word)) ++at;
  return at;
}

// "algorithm = merge", "definer = `a`@`b`", "sql security invoker", before the word at `end`.
std::vector<TTokenRange> Attributes(TTokens tokens, std::size_t end) {
  std::vector<TTokenRange> attributes;
  for (std::size_t at = 1; at < end; ++at) {
    const bool begins = IsAnyOf(tokens[at], {"algorithm", "definer", "sql"}) && !tokens[at - 1].Is("=");
    if (begins) attributes.push_back({at, at});
    if (!attributes.empty()) attributes.back().last = at + 1;
  }
  return attributes;
}

std::string_view Slice(std::string_view text, TTokens tokens, TTokenRange range) {
  const std::size_t start = tokens[range.first].start;
  return text.substr(start, tokens[range.last - 1].End() - start);
}

// --- Routines

// After the type of a result.
std::size_t AfterType(TTokens tokens, std::size_t at) {
  constexpr std::string_view kSays[] = {"unsigned", "signed",    "zerofill", "binary",  "ascii",     "unicode",
                                        "byte",     "precision", "varying",  "varchar", "character", "char"};
  for (++at;; ++at) {
    const TToken& token = TokenAt(tokens, at);
    if (token.Is("("))
      at = AfterGroup(tokens, at) - 1;
    else if (IsAnyOf(token, {"set", "charset", "collate"}))
      ++at;
    else if (std::ranges::none_of(kSays, [&token](std::string_view word) { return IsKeyword(token, word); }))
      return at;
  }
}

// Words of a characteristic at `at`; 0 for none.
std::size_t CharacteristicLength(TTokens tokens, std::size_t at) {
  const auto is = [&](std::size_t offset, std::initializer_list<std::string_view> words) {
    return IsAnyOf(TokenAt(tokens, at + offset), words);
  };
  if (is(0, {"comment"}) && TokenAt(tokens, at + 1).kind == EToken::String) return 2;
  if (is(0, {"sql"}) && is(1, {"security"})) return 3;
  if (is(0, {"reads", "modifies"}) && is(1, {"sql"})) return 3;
  if (is(0, {"language", "contains", "no"}) && is(1, {"sql"})) return 2;
  if (is(0, {"not"}) && is(1, {"deterministic"})) return 2;
  return is(0, {"deterministic"}) ? 1 : 0;
}

std::size_t AfterCharacteristics(TTokens tokens, std::size_t at) {
  while (const std::size_t length = CharacteristicLength(tokens, at)) at += length;
  return at;
}

// The last of them holds, so that those of the statement stand behind those of the text.
bool AlterRoutine(std::string_view statement, TTokens altering, std::size_t at, TOtherObject& routine) {
  if (AfterCharacteristics(altering, at) + 1 != altering.size()) return false;
  const std::vector<TToken> tokens = Tokens(routine.text);
  std::size_t place = NextBracket(tokens, FindWord(tokens, 0, routine.kind));
  if (place == tokens.size()) return false;
  place = AfterGroup(tokens, place);
  const bool function = routine.kind == "function";
  if (function && !TokenAt(tokens, place).Is("returns")) return false;
  place = AfterCharacteristics(tokens, function ? AfterType(tokens, place + 1) : place);
  if (place + 1 >= tokens.size()) return false;
  routine.text.insert(tokens[place].start, std::string(statement.substr(altering[at].start)) + " ");
  return true;
}

// --- Events

struct TEventAlteration {
  std::string status{};  // "enable", "disable on slave"; empty where it stays
  std::string name{};
};

bool ReadAlteration(TTokens tokens, std::size_t at, TEventAlteration& read) {
  while (at + 1 < tokens.size()) {
    if (IsKeyword(tokens[at], "rename") && TokenAt(tokens, at + 1).Is("to")) {
      const std::optional<std::size_t> after = AfterName(tokens, at + 2, read.name);
      if (!after) return false;
      at = *after;
    } else if (IsAnyOf(tokens[at], {"enable", "disable"})) {
      read.status = LowerText(tokens[at].text);
      if (TokenAt(tokens, ++at).Is("on")) {
        read.status += " on " + std::string(TokenAt(tokens, at + 1).text);
        at += 2;
      }
    } else {
      return false;
    }
  }
  return true;
}

// Its definer is whoever alters it.
std::string WithoutDefiner(const std::string& text, const std::string& kind) {
  const std::vector<TToken> tokens = Tokens(text);
  return "create " + text.substr(tokens[FindWord(tokens, 0, kind)].start);
}

// on schedule ... [on completion ...] [enable | disable [on slave]] [comment '...'] do ...
std::string WithStatus(std::string text, const std::string& status) {
  const std::vector<TToken> tokens = Tokens(text);
  const std::size_t body = FindWord(tokens, FindWord(tokens, 0, "schedule"), "do");
  std::size_t place = FindWord(tokens, FindWord(tokens, 0, "schedule"), "comment");
  place = std::min(place, body);
  if (body + 1 == tokens.size()) RaiseError(text);
  text.insert(tokens[place].start, status + " ");
  for (std::size_t at = FindWord(tokens, 0, "schedule"); at < place; ++at) {
    if (!IsAnyOf(tokens[at], {"enable", "disable"})) continue;
    const std::size_t next = std::min(tokens[at + 1].Is("on") ? at + 3 : at + 1, place);
    text.erase(tokens[at].start, tokens[next].start - tokens[at].start);
    break;
  }
  return text;
}

std::string WithName(std::string text, const std::string& kind, const std::string& name) {
  const std::vector<TToken> tokens = Tokens(text);
  std::size_t at = FindWord(tokens, 0, kind) + 1;
  if (IsKeyword(TokenAt(tokens, at), "if")) at += 3;  // not exists
  std::string before;
  const std::optional<std::size_t> after = AfterName(tokens, at, before);
  if (!after) RaiseError(text);
  const std::size_t start = tokens[at].start;
  return text.replace(start, tokens[*after - 1].End() - start, QuotedName(name));
}

bool AlterEvent(TTokens altering, std::size_t at, TOtherObject& event) {
  TEventAlteration read;
  if (!ReadAlteration(altering, at, read)) return false;
  std::string text = WithoutDefiner(event.text, event.kind);
  if (!read.status.empty()) text = WithStatus(std::move(text), read.status);
  if (!read.name.empty()) text = WithName(std::move(text), event.kind, read.name);
  event.text = std::move(text);
  if (!read.name.empty()) event.name = read.name;
  return true;
}

}  // namespace

std::string AlteredView(std::string_view text, std::string_view statement) {
  const std::vector<TToken> before = Tokens(text);
  const std::vector<TToken> after = Tokens(statement);
  const std::size_t view = FindWord(after, 0, "view");
  std::set<std::string> said;
  for (const TTokenRange& attribute : Attributes(after, view)) said.insert(LowerText(after[attribute.first].text));
  std::string altered = "create ";
  for (const TTokenRange& attribute : Attributes(before, FindWord(before, 0, "view")))
    if (!said.contains(LowerText(before[attribute.first].text)))
      altered += std::string(Slice(text, before, attribute)) + " ";
  return altered + std::string(statement.substr(after[0].End() + 1));
}

bool AlterObject(std::string_view statement, TOtherObject& object) {
  try {
    const std::vector<TToken> tokens = Tokens(statement);
    const std::size_t word = FindWord(tokens, 0, object.kind);
    std::string name;
    const std::optional<std::size_t> at = AfterName(tokens, word + 1, name);
    if (!at || word > 1 || object.text.empty()) return false;  // with a definer of its own
    if (object.kind == "event") return AlterEvent(tokens, *at, object);
    const bool routine = object.kind == "procedure" || object.kind == "function";
    return routine && AlterRoutine(statement, tokens, *at, object);
  } catch (const EVelmora&) {
    return false;
  }
}

}  // namespace velmora
