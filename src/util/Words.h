// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The word scanner of the statement tools. Positions count bytes from 1. A delimiter is one of the 17 characters
// blank , . < > ; ' ( ) + - * / = CR LF tab and forms a word by itself; white space is blank, CR, LF and tab.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "util/Lists.h"

namespace velmora {

namespace words_detail {  // one look-up per character: every text that is read goes through these

inline constexpr std::uint8_t kDelimiter = 1;
inline constexpr std::uint8_t kSpace = 2;

constexpr std::array<std::uint8_t, 256> MakeKinds() {
  std::array<std::uint8_t, 256> kinds{};
  for (const char c : std::string_view(" ,.<>;'()+-*/=\r\n\t")) kinds[static_cast<unsigned char>(c)] |= kDelimiter;
  for (const char c : std::string_view(" \r\n\t")) kinds[static_cast<unsigned char>(c)] |= kSpace;
  return kinds;
}

inline constexpr std::array<std::uint8_t, 256> kKinds = MakeKinds();

constexpr bool IsKind(char c, std::uint8_t kind) { return (kKinds[static_cast<unsigned char>(c)] & kind) != 0; }

}  // namespace words_detail

constexpr bool IsWordDelimiter(char c) { return words_detail::IsKind(c, words_detail::kDelimiter); }
constexpr bool IsWordSpace(char c) { return words_detail::IsKind(c, words_detail::kSpace); }

// The word at `pos` or after it. From inside a word its whole is given. `start` is where it begins. With `quotes` and a
// quote character at `pos`: the literal up to the next such quote that is not after a backslash, quotes included; if
// there are only such after a backslash the last of them closes it, and with none at all "StrNextWord: Invalid
// string." is raised. `word` points into `text`; it is empty past the end.
void StrNextWord(std::string_view text, std::size_t pos, std::size_t& start, std::string_view& word,
                 bool quotes = false);

// The word before `pos`: back over white space (with `skipDelimiters` over delimiters too), then as StrNextWord from
// there. With `quotes` and a quote character reached: the literal that ends there; without an opening quote raises
// "StrPrevWord: Invalid string.". Empty at position 1.
void StrPrevWord(std::string_view text, std::size_t pos, std::size_t& start, std::string_view& word,
                 bool quotes = false, bool skipDelimiters = false);

// Whether `pos` lies inside quotes: the apostrophes before it are odd in number, or else the double quotes are; with
// `quotes` the escaped ones do not count (CountChar). Counts from the start of the text.
bool InQuotes(std::string_view text, std::size_t pos, bool quotes);

// InQuotes for positions that only grow: each byte of the text is looked at once.
class TQuoteCounter {
 public:
  explicit TQuoteCounter(std::string_view text, bool quotes = true) : text_(text), quotes_(quotes) {}
  bool InQuotes(std::size_t pos);  // `pos` must not be below that of the call before

 private:
  std::string_view text_;
  bool quotes_;
  std::size_t counted_ = 0;
  bool singleOdd_ = false;
  bool doubleOdd_ = false;
};

// The next occurrence of `word` at `from` or after it that is a word of its own; 0 when there is none. An occurrence
// within a longer word is passed over with that word. Unless `ignoreQuotes`, an occurrence inside quotes is stepped
// over and the search goes on after it.
std::size_t FindWord(std::string_view word, std::string_view text, std::size_t from, bool ignoreQuotes);

// Splits where FindWord finds `separator`; after each separator one more character is dropped, so that a piece begins
// where the one before it ends plus the separator's length plus that of the character (1 at the end of the text).
// `quoted` true takes separators inside quotes too. The last piece counts; an empty text gives one empty piece. Linear
// in the text.
void SplitWords(std::string_view separator, std::string_view text, TStringList& list, bool quoted);

}  // namespace velmora
