// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/KeyText.h"

#include <array>

#include "util/Format.h"

namespace velmora {

namespace {

struct TKindWord {
  std::string_view word;
  EElement kind;
};
// Deliberate: a vector key is a plain one whose own text says the rest.
constexpr std::array<TKindWord, 6> kKeyWords = {{{"key", EElement::Key},
                                                 {"index", EElement::Key},
                                                 {"unique", EElement::UniqueKey},
                                                 {"fulltext", EElement::FulltextKey},
                                                 {"spatial", EElement::SpatialKey},
                                                 {"vector", EElement::Key}}};

bool IsConstraintWord(const TToken& token) {
  for (const std::string_view word : {"primary", "unique", "foreign", "check"})
    if (IsKeyword(token, word)) return true;
  return false;
}

std::size_t AfterIfNotExists(TTokens tokens, std::size_t at) {
  const bool there = IsKeyword(TokenAt(tokens, at), "if") && IsKeyword(TokenAt(tokens, at + 1), "not") &&
                     IsKeyword(TokenAt(tokens, at + 2), "exists");
  return there ? at + 3 : at;
}

bool IsKeyType(const TToken& token) { return IsKeyword(token, "using") || IsKeyword(token, "type"); }

// Takes the name that may stand before the list of columns.
void TakeIndexName(TTokens tokens, TElementHead& head) {
  head.body = AfterIfNotExists(tokens, head.body);
  const TToken& token = TokenAt(tokens, head.body);
  if (!IsName(token)) return;
  if (IsKeyType(token) && !TokenAt(tokens, head.body + 1).Is("(")) return;
  head.name = NameOf(token);
  ++head.body;
}

// What may follow "constraint name"; nothing when it is no constraint.
std::optional<TElementHead> ReadConstraint(TTokens tokens, std::size_t at, std::string name) {
  const TToken& word = TokenAt(tokens, at);
  const TToken& next = TokenAt(tokens, at + 1);
  TElementHead head{EElement::Check, std::move(name), at + 1};
  if (IsKeyword(word, "check")) return next.Is("(") ? std::optional(head) : std::nullopt;
  if (IsKeyword(word, "primary") && IsKeyword(next, "key")) {
    TElementHead key{EElement::PrimaryKey, "", at + 2};
    TakeIndexName(tokens, key);  // servers take any, and call it PRIMARY
    key.name = "PRIMARY";
    return key;
  }
  if (!IsKeyword(word, "foreign") || !IsKeyword(next, "key")) return std::nullopt;
  head.kind = EElement::ForeignKey;
  head.body = at + 2;
  const std::string constraint = head.name;
  TakeIndexName(tokens, head);
  if (!constraint.empty()) head.name = constraint;
  return head;
}

std::optional<TElementHead> ReadKey(TTokens tokens, std::size_t at, const std::string& constraint) {
  const TToken& word = TokenAt(tokens, at);
  for (const TKindWord& row : kKeyWords) {
    if (!IsKeyword(word, row.word)) continue;
    TElementHead head{row.kind, constraint, at + 1};
    const TToken& next = TokenAt(tokens, head.body);
    const bool second = IsKeyword(next, "key") || IsKeyword(next, "index");
    if (row.word == "vector" && !second) return std::nullopt;
    if (row.word != "key" && row.word != "index" && second) ++head.body;
    TakeIndexName(tokens, head);
    return head;
  }
  return std::nullopt;
}

std::optional<TElementHead> ReadPeriod(TTokens tokens) {
  if (!IsKeyword(TokenAt(tokens, 0), "period") || !IsKeyword(TokenAt(tokens, 1), "for")) return std::nullopt;
  if (!IsName(TokenAt(tokens, 2)) || !TokenAt(tokens, 3).Is("(")) return std::nullopt;
  return TElementHead{EElement::Period, NameOf(tokens[2]), 3};
}

// The column of one part of a key; empty for an expression. Nothing for the period of a key without overlaps.
std::optional<std::string> PartColumn(TTokens tokens, TTokenRange part) {
  const TToken& token = TokenAt(tokens, part.first);
  if (IsKeyword(TokenAt(tokens, part.first + 1), "without")) return std::nullopt;
  return IsName(token) ? NameOf(token) : std::string();
}

std::vector<std::string> ListColumns(TTokens tokens, std::size_t open) {
  std::vector<std::string> result;
  for (const TTokenRange part : ListParts(tokens, open))
    if (std::optional<std::string> column = PartColumn(tokens, part)) result.push_back(std::move(*column));
  return result;
}

TKeyPart ReadPart(std::string_view text, TTokens tokens, TTokenRange range) {
  TKeyPart part;
  const TToken& first = TokenAt(tokens, range.first);
  if (range.first >= range.last) return part;
  part.text = text.substr(first.start, tokens[range.last - 1].End() - first.start);
  if (!IsName(first)) return part;
  part.column = NameOf(first);
  if (range.last - range.first > 2 && tokens[range.first + 1].Is("("))
    part.length = TryStrToInt(tokens[range.first + 2].text).value_or(0);
  return part;
}

}  // namespace

std::size_t NextBracket(TTokens tokens, std::size_t at) {
  while (at < tokens.size() && !tokens[at].Is("(")) ++at;
  return at;
}

bool IsName(const TToken& token) { return token.kind == EToken::Name || token.kind == EToken::Word; }

std::size_t AfterGroup(TTokens tokens, std::size_t open) {
  std::size_t depth = 0;
  for (std::size_t at = open; at < tokens.size(); ++at) {
    if (tokens[at].Is("(")) ++depth;
    if (tokens[at].Is(")") && --depth == 0) return at + 1;
  }
  return tokens.size();
}

std::size_t AfterValue(TTokens tokens, std::size_t at) {
  return TokenAt(tokens, at).Is("(") ? AfterGroup(tokens, at) : at + 1;
}

std::optional<TElementHead> ReadElementHead(TTokens tokens) {
  const TToken& first = TokenAt(tokens, 0);
  if (first.kind == EToken::Name) return TElementHead{EElement::Column, NameOf(first), 1};
  if (first.kind != EToken::Word) return std::nullopt;
  if (IsKeyword(first, "constraint")) {
    const bool named = !IsConstraintWord(TokenAt(tokens, 1));
    if (named && !IsName(TokenAt(tokens, 1))) return std::nullopt;
    const std::string name = named ? NameOf(tokens[1]) : std::string();
    const std::size_t at = named ? 2 : 1;
    if (IsKeyword(TokenAt(tokens, at), "unique")) return ReadKey(tokens, at, name);
    return ReadConstraint(tokens, at, name);
  }
  if (IsConstraintWord(first) && !IsKeyword(first, "unique")) return ReadConstraint(tokens, 0, "");
  if (std::optional<TElementHead> key = ReadKey(tokens, 0, "")) return key;
  if (std::optional<TElementHead> period = ReadPeriod(tokens)) return period;
  return TElementHead{EElement::Column, NameOf(first), 1};
}

std::vector<TTokenRange> ListParts(TTokens tokens, std::size_t open) {
  std::vector<TTokenRange> result;
  const std::size_t after = AfterGroup(tokens, open);
  if (after < open + 3) return result;
  TTokenRange part{open + 1, open + 1};
  for (std::size_t at = open + 1; at + 1 < after; at = part.last) {
    if (tokens[at].Is(",")) {
      result.push_back(part);
      part = {at + 1, at + 1};
    } else {
      part.last = AfterValue(tokens, at);
    }
  }
  result.push_back(part);
  return result;
}

std::vector<TKeyPart> ReadKeyParts(std::string_view text, TTokens tokens) {
  std::vector<TKeyPart> parts;
  for (const TTokenRange range : ListParts(tokens, NextBracket(tokens, 0)))
    parts.push_back(ReadPart(text, tokens, range));
  return parts;
}

TForeignKeyParts ReadForeignKeyParts(TTokens tokens, std::size_t body) {
  TForeignKeyParts parts;
  const std::size_t open = NextBracket(tokens, body);
  parts.columns = ListColumns(tokens, open);
  std::size_t at = AfterGroup(tokens, open);
  if (IsKeyword(TokenAt(tokens, at), "references")) ++at;
  if (IsName(TokenAt(tokens, at))) parts.table = NameOf(tokens[at++]);
  if (TokenAt(tokens, at).Is(".") && IsName(TokenAt(tokens, at + 1))) {
    parts.database = std::move(parts.table);
    parts.table = NameOf(tokens[at + 1]);
    at += 2;
  }
  if (TokenAt(tokens, at).Is("(")) {
    parts.references = ListColumns(tokens, at);
    at = AfterGroup(tokens, at);
  }
  parts.rules = at;
  return parts;
}

std::vector<std::string> KeyColumns(const TElement& key) {
  const TTokens tokens = key.text.Tokens();
  return ListColumns(tokens, NextBracket(tokens, key.text.Body()));
}

}  // namespace velmora
