// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Reads MySQL text as tokens: creation texts, statements of scripts.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "util/Text.h"

namespace velmora {

enum class EToken {
  Word,    // a keyword or a name without quotes
  Name,    // in backticks
  String,  // in ' or ", with its prefix (_utf8mb4'..', x'..', b'..', n'..') if there is one
  Number,  // unsigned, with fraction and exponent; 0x and 0b forms too
  Symbol,  // one character; but := <=> <> != >= <= << >> && || -> ->> are one token
  End
};

// Parts of the text, which outlives its tokens.
struct TToken {
  EToken kind = EToken::End;
  std::string_view text;  // as written
  std::size_t start = 0;  // in the text
  std::size_t End() const { return start + text.size(); }
  bool Is(std::string_view word) const {  // a word, ignoring case, or a symbol
    return kind == EToken::Word ? SameText(text, word) : kind == EToken::Symbol && text == word;
  }
};

using TTokens = std::span<const TToken>;

// Places of a first token, and after a last one.
struct TTokenRange {
  std::size_t first = 0;
  std::size_t last = 0;
};

// Comments are passed over. What stands in a comment for servers of a version (/*!80023 INVISIBLE */, /*M!100401 .. */)
// is read as if its marks were not there, but for version 999999, which no server has. The last token is End. Raises
// "line %d: unclosed %s quote" ("single", "double", "back") and "line %d: unclosed comment", with the line of its
// start.
std::vector<TToken> Tokens(std::string_view text);

// What the tokens of `tokens` from `first` to before `last` say, as written in `text`. Where comments, marks of
// versions or line ends stand between them, white space is one blank, comments go, and marks stay, in pairs. `last` is
// the place of a token, so at most that of End.
std::string TextOf(std::string_view text, TTokens tokens, std::size_t first, std::size_t last);
// Whether nothing but blanks stands between these tokens, so that what they say is what is written.
bool IsPlain(std::string_view text, TTokens tokens, std::size_t first, std::size_t last);
// The line, from 1, of a place in the text.
int LineOf(std::string_view text, std::size_t place);

std::string NameOf(const TToken& token);         // of a Name or Word, doubled backticks undone
std::string_view PrefixOf(const TToken& token);  // of a String, as written: "_utf8mb4", "x"; mostly empty
std::string ValueOf(const TToken& token);        // of a String, quotes and escapes undone, prefix left out
std::string QuotedName(std::string_view name);   // `name`, backticks doubled
std::string QuotedText(std::string_view value);  // 'value' as servers print it
// Whether it is this word, unquoted, ignoring case.
inline bool IsKeyword(const TToken& token, std::string_view word) {
  return token.kind == EToken::Word && SameText(token.text, word);
}

}  // namespace velmora
