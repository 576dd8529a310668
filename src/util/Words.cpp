// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Words.h"

#include <algorithm>

#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kNoClosingQuote[] = "StrNextWord: Invalid string.";
constexpr char kNoOpeningQuote[] = "StrPrevWord: Invalid string.";

bool IsQuote(char c) { return c == '\'' || c == '"'; }

// Index of the quote that closes the one at index `open`.
std::size_t ClosingQuote(std::string_view text, std::size_t open) {
  std::size_t close = std::string_view::npos;
  for (std::size_t at = text.find(text[open], open + 1); at != std::string_view::npos;
       at = text.find(text[open], at + 1)) {
    close = at;
    if (text[at - 1] != '\\') break;
  }
  // Deliberate: where every further quote stands after a backslash, the last of them closes.
  if (close == std::string_view::npos) RaiseError(kNoClosingQuote);
  return close;
}

// Index of the quote that opens what the one at index `close` closes.
std::size_t OpeningQuote(std::string_view text, std::size_t close) {
  std::size_t open = close;
  while (open > 0) {
    open = text.rfind(text[close], open - 1);
    if (open == std::string_view::npos) break;
    if (open == 0 || text[open - 1] != '\\') return open;
  }
  RaiseError(kNoOpeningQuote);
}

// FindWord with the quotes counted so far; without a counter quotes are nothing special.
std::size_t FindWord(std::string_view word, std::string_view text, std::size_t from, TQuoteCounter* quotes) {
  while (const std::size_t at = Pos(word, text, from)) {
    std::size_t start = 0;
    std::string_view whole;
    StrNextWord(text, at, start, whole);
    if (whole == word && !(quotes != nullptr && quotes->InQuotes(at))) return at;
    from = start + whole.size();
  }
  return 0;
}

}  // namespace

void StrNextWord(std::string_view text, std::size_t pos, std::size_t& start, std::string_view& word, bool quotes) {
  start = pos;
  word = text.substr(text.size());
  if (pos > text.size()) return;
  std::size_t begin = pos - 1;
  if (quotes && IsQuote(text[begin])) {
    word = text.substr(begin, ClosingQuote(text, begin) - begin + 1);
    return;
  }
  while (begin < text.size() && IsWordSpace(text[begin])) ++begin;
  std::size_t end = begin;
  while (end < text.size() && !IsWordDelimiter(text[end])) ++end;
  if (end > begin)
    while (begin > 0 && !IsWordDelimiter(text[begin - 1])) --begin;
  else if (end < text.size())
    ++end;
  start = begin + 1;
  word = text.substr(begin, end - begin);
}

void StrPrevWord(std::string_view text, std::size_t pos, std::size_t& start, std::string_view& word, bool quotes,
                 bool skipDelimiters) {
  start = 1;
  word = text.substr(0, 0);
  std::size_t last = std::min(pos, text.size() + 1);
  last = last == 0 ? 0 : last - 1;
  while (last > 0 && (skipDelimiters ? IsWordDelimiter(text[last - 1]) : IsWordSpace(text[last - 1]))) --last;
  if (last == 0) return;
  if (quotes && IsQuote(text[last - 1])) {
    const std::size_t open = OpeningQuote(text, last - 1);
    start = open + 1;
    word = text.substr(open, last - open);
    return;
  }
  StrNextWord(text, last, start, word);
}

bool InQuotes(std::string_view text, std::size_t pos, bool quotes) { return TQuoteCounter(text, quotes).InQuotes(pos); }

bool TQuoteCounter::InQuotes(std::size_t pos) {
  const std::size_t end = std::min(pos == 0 ? 0 : pos - 1, text_.size());
  for (; counted_ < end; ++counted_) {
    const char c = text_[counted_];
    if (!IsQuote(c) || (quotes_ && IsEscaped(text_, counted_))) continue;
    bool& odd = c == '\'' ? singleOdd_ : doubleOdd_;
    odd = !odd;
  }
  return singleOdd_ || doubleOdd_;
}

std::size_t FindWord(std::string_view word, std::string_view text, std::size_t from, bool ignoreQuotes) {
  TQuoteCounter quotes(text);
  return FindWord(word, text, from, ignoreQuotes ? nullptr : &quotes);
}

void SplitWords(std::string_view separator, std::string_view text, TStringList& list, bool quoted) {
  TStringList pieces;
  TQuoteCounter quotes(text);
  std::size_t from = 1;
  while (const std::size_t at = FindWord(separator, text, from, quoted ? nullptr : &quotes)) {
    pieces.emplace_back(text.substr(from - 1, at - from));
    // Deliberate: the carriage return after a ";" goes with it, and so does any other character in its place.
    const std::size_t after = at - 1 + separator.size();
    from = after + 1 + (after < text.size() ? CharSize(text, after) : 1);
  }
  pieces.emplace_back(text.substr(std::min(from - 1, text.size())));
  list = std::move(pieces);
}

}  // namespace velmora
