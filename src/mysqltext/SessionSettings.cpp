// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/SessionSettings.h"

#include <vector>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kLongest = 4096;  // of a statement that is looked at

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
  const std::size_t word = statement.find_first_of("sS");
  return statement.size() <= kLongest && word < 12 && SameText(statement.substr(word, 3), "set");
}

}  // namespace

const std::array<TSessionSettings::TSetting, 3> TSessionSettings::kSettings = {
    {{"sql_mode", [](TObjectContext& context, const std::string& value) { context.sql_mode = value; },
      [](TObjectContext& context) { context.sql_mode.reset(); }},
     {"collation_connection", [](TObjectContext& context, const std::string& value) { context.collation = value; },
      [](TObjectContext& context) { context.collation.clear(); }},
     {"time_zone", [](TObjectContext& context, const std::string& value) { context.time_zone = value; },
      [](TObjectContext& context) { context.time_zone.clear(); }}}};

// set @saved = @@sql_mode; set sql_mode = 'ANSI'; set sql_mode = @saved
void TSessionSettings::Take(std::string_view statement) {
  if (!MayBeSet(statement)) return;
  std::vector<TToken> tokens;
  try {
    tokens = Tokens(statement);
  } catch (const EVelmora&) {
    return;
  }
  const std::size_t sign = IsOwnVariable(tokens, 1) ? 3 : AfterScope(tokens, 1) + 1;
  if (!tokens[0].Is("set") || !TokenAt(tokens, sign).Is("=")) return;
  const bool keeps = IsOwnVariable(tokens, 1);
  const std::size_t value = keeps ? AfterScope(tokens, sign + 1) : sign + 1;
  const TToken& name = TokenAt(tokens, keeps ? value : sign - 1);
  const TToken& said = TokenAt(tokens, value);
  if (TokenAt(tokens, value + 1).kind != EToken::End && !said.Is("@")) return;
  for (std::size_t i = 0; i < kSettings.size(); ++i) {
    if (!name.Is(kSettings[i].variable)) continue;
    const bool counts = kept_[i] && (said.kind == EToken::String || said.kind == EToken::Word);
    if (keeps)
      kept_[i] = true;
    else if (counts)
      kSettings[i].set(context_, said.kind == EToken::String ? ValueOf(said) : std::string(said.text));
    else
      kSettings[i].forget(context_);
  }
}

}  // namespace velmora
