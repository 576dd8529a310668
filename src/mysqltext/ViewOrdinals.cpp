// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/ViewOrdinals.h"

#include <cstddef>
#include <vector>

#include "mysqltext/Lexer.h"

namespace velmora {

namespace {

constexpr std::string_view kLost = "''";

bool Lost(const TToken& token) { return token.kind == EToken::String && token.text == kLost; }

// Texts of other letters than this session's are printed in another form.
bool Same(const TToken& printed, const TToken& kept) {
  return printed.kind == kept.kind && (printed.kind == EToken::String || printed.text == kept.text);
}

}  // namespace

bool MayLackOrdinals(std::string_view text) {
  if (text.find(kLost) == std::string_view::npos) return false;
  const std::vector<TToken> tokens = Tokens(text);
  for (std::size_t i = 1; i < tokens.size(); ++i)
    if (Lost(tokens[i]) && (tokens[i - 1].Is("by") || tokens[i - 1].Is(","))) return true;
  return false;
}

// From the end, since what stands before the query differs.
std::optional<std::string> WithOrdinals(std::string_view text, std::string_view query) {
  const std::vector<TToken> printed = Tokens(text);
  const std::vector<TToken> kept = Tokens(query);
  std::string result(text);
  std::size_t at = printed.size() - 1;
  std::size_t place = kept.size() - 1;
  while (place > 0) {
    const TToken& token = kept[place - 1];
    if (at == 0) return std::nullopt;
    const TToken& shown = printed[at - 1];
    if (Lost(shown) && token.kind == EToken::Number) {
      result.replace(shown.start, shown.text.size(), token.text);
    } else if (token.Is(".") && place > 1 && !shown.Is(".")) {  // the database, which the printed text leaves out
      place -= 2;
      continue;
    } else if (!Same(shown, token)) {
      return std::nullopt;
    }
    --at;
    --place;
  }
  if (at == 0 || !printed[at - 1].Is("as")) return std::nullopt;
  return result;
}

}  // namespace velmora
