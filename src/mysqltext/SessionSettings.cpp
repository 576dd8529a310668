// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/SessionSettings.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "mysqltext/Charsets.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/LexicalRules.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kLongest = 4096;  // of a statement that is looked at
constexpr std::size_t kShownChars = 60;
constexpr std::string_view kVariables[] = {"sql_mode", "collation_connection", "time_zone"};
constexpr char kUnknownMode[] = "made in a mode that nobody knows after %s: %s";

// Modes that stand for others, too, which servers name beside them: MySQL Reference Manual and MariaDB Documentation,
// "Combination SQL Modes", "SQL_MODE".
struct TCombinedMode {
  std::string_view mode;
  std::string_view others;
};
constexpr TCombinedMode kCombinedModes[] = {
    {"ANSI", "REAL_AS_FLOAT,PIPES_AS_CONCAT,ANSI_QUOTES,IGNORE_SPACE"},
    {"TRADITIONAL",
     "STRICT_TRANS_TABLES,STRICT_ALL_TABLES,NO_ZERO_IN_DATE,NO_ZERO_DATE,ERROR_FOR_DIVISION_BY_ZERO,"
     "NO_ENGINE_SUBSTITUTION"},
    {"ORACLE",
     "PIPES_AS_CONCAT,ANSI_QUOTES,IGNORE_SPACE,NO_KEY_OPTIONS,NO_TABLE_OPTIONS,NO_FIELD_OPTIONS,"
     "SIMULTANEOUS_ASSIGNMENT"}};

char UpperChar(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// As servers have it.
std::string ModeOf(std::string written) {
  std::ranges::transform(written, written.begin(), UpperChar);
  TStringList named;
  SplitPlain(',', written, named);
  TStringList modes;
  const auto add = [&modes](const std::string& mode) {
    if (!mode.empty() && IndexOf(modes, mode) == kNotInList) modes.push_back(mode);
  };
  for (const std::string& one : named) {
    const std::string mode = Trim(one);
    for (const TCombinedMode& row : kCombinedModes) {
      TStringList others;
      if (row.mode == mode) SplitPlain(',', std::string(row.others), others);
      for (const std::string& other : others) add(other);
    }
    add(mode);
  }
  return JoinList(modes, ",");
}

// The place after "@@", "@@session.", "session "; of the name of what is set or read.
std::size_t AfterScope(TTokens tokens, std::size_t at) {
  while (TokenAt(tokens, at).Is("@")) ++at;
  if (TokenAt(tokens, at).Is("session") || TokenAt(tokens, at).Is("local"))
    at += TokenAt(tokens, at + 1).Is(".") ? 2u : 1u;
  return at;
}

bool IsOwnVariable(TTokens tokens, std::size_t at) {
  return TokenAt(tokens, at).Is("@") && !TokenAt(tokens, at + 1).Is("@");
}

bool MayBeSet(std::string_view statement) {
  if (statement.size() > kLongest) return false;
  std::size_t at = 0;
  for (std::size_t passed = 1; passed > 0 && at < statement.size(); at += passed) {
    const std::size_t comment = CommentEnd(statement, at);
    passed = IsBlank(statement[at]) ? 1 : VersionMark(statement, at);
    if (passed == 0 && comment > at && comment != std::string_view::npos) passed = comment - at;
  }
  return at < statement.size() && SameText(statement.substr(at, 3), "set");
}

// "a = 1", between commas.
std::vector<TTokenRange> Assignments(TTokens tokens) {
  std::vector<TTokenRange> ranges = {{1, 1}};
  for (std::size_t at = 1; at + 1 < tokens.size(); at = AfterValue(tokens, at))
    if (tokens[at].Is(","))
      ranges.push_back({at + 1, at + 1});
    else
      ranges.back().last = AfterValue(tokens, at);
  return ranges;
}

std::optional<std::size_t> SettingOf(const TToken& name) {
  for (std::size_t i = 0; i < std::size(kVariables); ++i)
    if (name.Is(kVariables[i])) return i;
  return std::nullopt;
}

std::string SaidBy(const TToken& token) {
  return token.kind == EToken::String ? ValueOf(token) : std::string(token.text);
}

}  // namespace

struct TSessionSettings::TAssignment {
  TTokens tokens;
  std::size_t first;  // of what is set
  std::size_t value;
  std::size_t last;
  bool by_hand;
  std::string text;  // to be told, with its place

  const TToken& Value() const { return TokenAt(tokens, value); }
  bool IsOne() const { return value + 1 == last; }
  // Of the session's variable that it reads, and nothing else; none where it reads no such.
  std::optional<std::size_t> Read() const {
    const std::size_t name = AfterScope(tokens, value);
    return Value().Is("@") && name + 1 == last ? SettingOf(TokenAt(tokens, name)) : std::nullopt;
  }
};

TObjectContext TSessionSettings::Context() const {
  TObjectContext context{now_[kMode].said, now_[kCollation].said.value_or(""), now_[kZone].said.value_or("")};
  context.of_client = !context.sql_mode;
  return context;
}

// set @saved = @@sql_mode; set sql_mode = 'ANSI'; set sql_mode = @saved
void TSessionSettings::Take(std::string_view statement, bool by_hand, const std::string& place) {
  if (!MayBeSet(statement)) return;
  std::vector<TToken> tokens;
  try {
    tokens = Tokens(statement);
  } catch (const EVelmora&) {
    return;
  }
  if (tokens[0].Is("set") && TokenAt(tokens, 1).Is("names") && by_hand) return SetNames(tokens);
  const std::vector<TTokenRange> assignments = Assignments(tokens);
  if (!by_hand && assignments.size() != 1) return;
  for (const TTokenRange& range : assignments) {
    const std::size_t sign = IsOwnVariable(tokens, range.first) ? range.first + 2 : AfterScope(tokens, range.first) + 1;
    if (!TokenAt(tokens, sign).Is("=") && !TokenAt(tokens, sign).Is(":=")) continue;
    const std::string shown = CutChars(std::string(statement), kShownChars);
    Assign({tokens, range.first, sign + 1, range.last, by_hand, Format(kUnknownMode, place, shown)});
  }
}

void TSessionSettings::Assign(const TAssignment& assignment) {
  if (IsOwnVariable(assignment.tokens, assignment.first)) return Keep(assignment);
  const TToken& name = assignment.tokens[AfterScope(assignment.tokens, assignment.first)];
  if (assignment.by_hand && name.Is("character_set_connection") && assignment.IsOne())
    now_[kCollation] = {NamedCharset(CharsetName(SaidBy(assignment.Value())), "").collation, {}, true};
  const std::optional<std::size_t> setting = SettingOf(name);
  if (setting) assignment.by_hand ? SetByHand(*setting, assignment) : SetByProgram(*setting, assignment);
}

void TSessionSettings::Keep(const TAssignment& assignment) {
  const std::string variable = LowerText(assignment.tokens[assignment.first + 1].text);
  kept_values_.erase(variable);
  const std::optional<std::size_t> setting = assignment.Read();
  if (!setting) return;
  kept_[*setting] = true;
  kept_values_[variable] = now_[*setting];
}

// Of a variable that put what it kept into a setting; null for any other value.
const TSessionSettings::TValue* TSessionSettings::KeptIn(const TAssignment& assignment) const {
  if (!IsOwnVariable(assignment.tokens, assignment.value)) return nullptr;
  const auto found = kept_values_.find(LowerText(TokenAt(assignment.tokens, assignment.value + 1).text));
  return found == kept_values_.end() || assignment.value + 2 != assignment.last ? nullptr : &found->second;
}

// Of a mode that cannot be followed nothing is guessed; other settings are the session's own then.
void TSessionSettings::SetByHand(std::size_t setting, const TAssignment& assignment) {
  TValue& now = now_[setting];
  const TToken& value = assignment.Value();
  const bool literal = value.kind == EToken::String || (value.kind == EToken::Word && !value.Is("default"));
  if (assignment.Read() == setting) return;
  if (const TValue* kept = KeptIn(assignment))
    now = *kept;
  else if (assignment.IsOne() && literal)
    now = {setting == kMode ? ModeOf(SaidBy(value)) : SaidBy(value), {}, true};
  else
    now = {std::nullopt, setting == kMode ? assignment.text : std::string(), true};
}

void TSessionSettings::SetByProgram(std::size_t setting, const TAssignment& assignment) {
  TValue& now = now_[setting];
  const TToken& value = assignment.Value();
  if (!assignment.IsOne() && !value.Is("@")) return;
  const bool literal = value.kind == EToken::String || value.kind == EToken::Word;
  if (const TValue* kept = KeptIn(assignment))
    now = *kept;
  else if (kept_[setting] && literal)
    now = {SaidBy(value)};
  else
    now = {};
}

// set names 'latin1' [collate latin1_bin]
void TSessionSettings::SetNames(TTokens tokens) {
  const TToken& set = TokenAt(tokens, 2);
  const bool collated = TokenAt(tokens, 3).Is("collate");
  const std::string collation = collated ? SaidBy(TokenAt(tokens, 4)) : "";
  const std::string named = NamedCharset(CharsetName(SaidBy(set)), collation).collation;
  now_[kCollation] = {};
  if (!named.empty()) now_[kCollation] = {named, {}, true};
}

}  // namespace velmora
