// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The beginnings of elements, and lists of columns: what readers of keys and constraints share.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/Element.h"

namespace velmora {

// The token at a place, or an End after the last one.
inline const TToken& TokenAt(TTokens tokens, std::size_t at) {
  static constexpr TToken kEnd;
  return at < tokens.size() ? tokens[at] : kEnd;
}
bool IsName(const TToken& token);  // in backticks or a word
// After the bracket that closes the one at `open`; the number of tokens when nothing closes it.
std::size_t AfterGroup(TTokens tokens, std::size_t open);
// After whatever is at `at`: a group in brackets or one token.
std::size_t AfterValue(TTokens tokens, std::size_t at);

// The place of the next opening bracket, from `at` on; the number of tokens for none.
std::size_t NextBracket(TTokens tokens, std::size_t at);

struct TElementHead {
  EElement kind = EElement::Column;
  std::string name;      // as TElement has it
  std::size_t body = 0;  // the first token after kind and name
};
// Nothing for what begins no element.
std::optional<TElementHead> ReadElementHead(TTokens tokens);

// The parts of a list, without its brackets.
std::vector<TTokenRange> ListParts(TTokens tokens, std::size_t open);

// The columns of a key element, in order, without lengths and directions; of an expression part the empty text.
std::vector<std::string> KeyColumns(const TElement& key);
// The parts of a key, `text`, whose list is in its first brackets.
std::vector<TKeyPart> ReadKeyParts(std::string_view text, TTokens tokens);
TForeignKeyParts ReadForeignKeyParts(TTokens tokens, std::size_t body);

}  // namespace velmora
