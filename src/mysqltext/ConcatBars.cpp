// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/ConcatBars.h"

#include <algorithm>
#include <initializer_list>
#include <vector>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"

namespace velmora {

namespace {

constexpr std::size_t kMost = 256;  // the text is read anew for each
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

bool IsAnyOf(const TToken& token, std::initializer_list<std::string_view> words) {
  return std::ranges::any_of(words, [&token](std::string_view word) { return token.Is(word); });
}

// Words and signs behind which an operand begins, whatever it is.
bool OpensOperand(const TToken& token) {
  return IsAnyOf(token, {"select", "distinct", "and",  "or",  "xor", "when", "then", "else", "on", "where", "having",
                         "by",     "as",       "like", "div", "mod", "(",    ",",    "=",    "<",  ">",     "<=",
                         ">=",     "<>",       "!=",   "<=>", "*",   "/",    "%",    "^",    "||"});
}

// Words that are no names, and no functions either.
bool IsReserved(const TToken& token) {
  return OpensOperand(token) || IsAnyOf(token, {"end", "case", "not", "in", "any", "all", "some", "exists", "values",
                                                "binary", "interval", "between", "is", "row", "over", "collate"});
}

std::size_t OpeningOf(TTokens tokens, std::size_t close) {
  std::size_t depth = 0;
  for (std::size_t at = close + 1; at-- > 0;) {
    if (tokens[at].Is(")")) ++depth;
    if (tokens[at].Is("(") && --depth == 0) return at;
  }
  return kNone;
}

bool IsNamed(const TToken& token) { return IsName(token) && !IsReserved(token); }

// Where the name begins that ends with the token at `at`.
std::size_t StartOfName(TTokens tokens, std::size_t at) {
  while (at > 1 && tokens[at - 1].Is(".") && IsName(tokens[at - 2])) at -= 2;
  return at;
}

// Of a number the sign would be part of the operand.
bool IsBinarySign(TTokens tokens, std::size_t at) {
  const TToken& before = tokens[at - 1];
  const bool operand = before.kind == EToken::Number || before.kind == EToken::String || before.Is(")");
  return IsAnyOf(tokens[at], {"+", "-"}) && (operand || IsNamed(before));
}

// Of the operand that ends before `end`.
std::size_t StartOfOperand(TTokens tokens, std::size_t end) {
  std::size_t at = end - 1;
  if (tokens[at].Is(")")) {
    at = OpeningOf(tokens, at);
    if (at == kNone || at == 0) return kNone;
    const bool call = tokens[at - 1].End() == tokens[at].start && IsNamed(tokens[at - 1]);
    if (call) at = StartOfName(tokens, at - 1);
  } else if (IsNamed(tokens[at])) {
    at = StartOfName(tokens, at);
  } else if (tokens[at].kind != EToken::String && tokens[at].kind != EToken::Number) {
    return kNone;
  }
  return at > 1 && (OpensOperand(tokens[at - 1]) || IsBinarySign(tokens, at - 1)) ? at : kNone;
}

// After the operand that begins at `at`.
std::size_t EndOfOperand(TTokens tokens, std::size_t at) {
  const TToken& first = TokenAt(tokens, at);
  if (IsNamed(first)) {
    while (TokenAt(tokens, at + 1).Is(".")) at += 2;
    at = TokenAt(tokens, at + 1).Is("(") ? AfterGroup(tokens, at + 1) : at + 1;
  } else if (first.Is("(")) {
    at = AfterGroup(tokens, at);
  } else if (first.kind == EToken::String || first.kind == EToken::Number) {
    ++at;
  } else {
    return kNone;
  }
  const TToken& next = TokenAt(tokens, at);
  const bool goes_on = next.kind == EToken::String || IsAnyOf(next, {"collate", "over", "(", ".", "->", "->>"});
  return goes_on || at >= tokens.size() ? kNone : at;
}

}  // namespace

std::optional<std::string> WithoutConcatBars(std::string text) {
  for (std::size_t joined_so_far = 0; joined_so_far < kMost; ++joined_so_far) {
    const std::vector<TToken> tokens = Tokens(text);
    const auto bars = std::ranges::find_if(tokens, [](const TToken& token) { return token.Is("||"); });
    if (bars == tokens.end()) return text;
    const auto place = static_cast<std::size_t>(bars - tokens.begin());
    const std::size_t start = place == 0 ? kNone : StartOfOperand(tokens, place);
    const std::size_t end = EndOfOperand(tokens, place + 1);
    if (start == kNone || end == kNone) return std::nullopt;
    const std::string joined =
        "concat(" + TextOf(text, tokens, start, place) + ", " + TextOf(text, tokens, place + 1, end) + ")";
    text.replace(tokens[start].start, tokens[end - 1].End() - tokens[start].start, joined);
  }
  return std::nullopt;
}

}  // namespace velmora
