#pragma once

// The beginnings of elements, and lists of columns: what readers of keys and constraints share.

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/Lexer.h"
#include "mysqltext/TableText.h"

namespace velmora {

using TTokens = std::span<const TToken>;

// The token at a place, or an End behind the last one.
const TToken& TokenAt(TTokens tokens, std::size_t at);
bool IsName(const TToken& token);  // in backticks or a word
// Behind the bracket that closes the one at `open`; the number of tokens when nothing closes it.
std::size_t BehindGroup(TTokens tokens, std::size_t open);
// Behind whatever is at `at`: a group in brackets or one token.
std::size_t BehindValue(TTokens tokens, std::size_t at);

struct TElementHead {
  EElement kind = EElement::Column;
  std::string name;      // as TElement has it
  std::size_t body = 0;  // the first token behind kind and name
};
// Nothing for what begins no element.
std::optional<TElementHead> ReadElementHead(TTokens tokens);

// The parts of a list, without its brackets: places of their first tokens and behind their last ones.
struct TTokenRange {
  std::size_t first = 0;
  std::size_t last = 0;
};
std::vector<TTokenRange> ListParts(TTokens tokens, std::size_t open);

// A foreign key's parts, and where what follows its list of referenced columns begins.
TForeignKeyParts ReadForeignKeyParts(TTokens tokens, std::size_t body, std::size_t& rules);

}  // namespace velmora
