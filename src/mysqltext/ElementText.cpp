// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/ElementText.h"

#include <algorithm>
#include <cstddef>

#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

std::string KeyTextWithout(const TElementText& key, std::string_view name) {
  const TTokens tokens = key.Tokens();
  std::string kept;
  for (const TKeyPart& part : key.KeyParts())
    if (!SameText(part.column, name)) kept += (kept.empty() ? "" : ",") + part.text;
  if (kept.empty()) return {};
  const std::size_t open = NextBracket(tokens, 0);
  const std::size_t close = AfterGroup(tokens, open) - 1;
  return key.Str().substr(0, tokens[open].End()) + kept + key.Str().substr(tokens[close].start);
}

TKeyUse SplitKeyUse(const TElementText& key) {
  const TTokens tokens = key.Tokens();
  const std::size_t end = tokens.size();
  for (std::size_t at = AfterGroup(tokens, NextBracket(tokens, 0)); at < end; ++at) {
    const bool used = IsKeyword(tokens[at], "visible") || IsKeyword(tokens[at], "not");
    if (!used && !IsKeyword(tokens[at], "ignored") && !IsKeyword(tokens[at], "invisible")) continue;
    const std::size_t after = IsKeyword(tokens[at], "not") ? std::min(at + 2, end) : at + 1;
    TKeyUse result{key.Part({0, at}), used ? "" : LowerText(tokens[at].text)};
    if (after < end) result.text += " " + key.Part({after, end});
    return result;
  }
  return {key.Str(), ""};
}

namespace {

bool IsSequenceCall(const TToken& token) {
  return IsKeyword(token, "nextval") || IsKeyword(token, "lastval") || IsKeyword(token, "setval");
}

}  // namespace

void MoveSequences(TTableText& table, const std::string& from, const std::string& to) {
  if (from.empty() || to.empty()) return;
  for (TElement& element : table.elements) {
    const std::string& written = element.text.Str();
    if (element.kind != EElement::Column || written.find("val(") == std::string::npos) continue;
    std::string text;
    std::size_t done = 0;
    const TTokens tokens = element.text.Tokens();
    for (std::size_t at = 0; at + 3 < tokens.size(); ++at) {
      const TToken& database = tokens[at + 2];
      if (!IsSequenceCall(tokens[at]) || !tokens[at + 1].Is("(") || !tokens[at + 3].Is(".")) continue;
      if (!IsName(database) || NameOf(database) != from) continue;
      text += written.substr(done, database.start - done) + QuotedName(to);
      done = database.End();
    }
    if (done > 0) element.text = text + written.substr(done);
  }
}

namespace {

bool HasWideBytes(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) > 0x7F; });
}

// Where the default of a binary column stands among its tokens; after them all where there is none.
std::size_t DefaultOfBytes(EElement kind, const TElementText& element) {
  if (kind != EElement::Column) return element.Tokens().size();
  const TColumnParts& parts = element.Column();
  const bool bytes = InList(parts.type, {"binary", "varbinary"}) && parts.default_value;
  return bytes ? parts.default_value->first : element.Tokens().size();
}

}  // namespace

TElementText WithHexLiterals(EElement kind, TElementText element) {
  const std::string& written = element.Str();
  if (!HasWideBytes(written)) return element;
  const TTokens tokens = element.Tokens();
  const std::size_t bytes = DefaultOfBytes(kind, element);
  std::string text;
  std::size_t done = 0;
  for (std::size_t at = 0; at < tokens.size(); ++at) {
    const TToken& token = tokens[at];
    if (token.kind != EToken::String || !HasWideBytes(token.text)) continue;
    const std::string set = LowerText(PrefixOf(token));
    const bool of_other_set = set.starts_with('_') && !LettersOf(ValueOf(token), "utf8mb4");
    if (!of_other_set && (at != bytes || !set.empty())) continue;
    text += written.substr(done, token.start - done) + set + (set.empty() ? "x'" : " x'");
    for (const char c : ValueOf(token)) text += Format("%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    text += "'";
    done = token.End();
  }
  return done == 0 ? std::move(element) : TElementText(text + written.substr(done));
}

std::string PinnedColumnText(const TElementText& column, const TTableText& from, const TTableText& to) {
  if (TableCharset(from) == TableCharset(to)) return column.Str();
  const TColumnText here = ReadColumnText(column, from);
  if (!here.HasLetters() || SameCharset(here.charset, ReadColumnText(column, to).charset)) return column.Str();

  // What is inherited stands nowhere in the text, so its own place is free: after the type and its brackets.
  const TTokens tokens = column.Tokens();
  const std::size_t type = TokenAt(tokens, 2).Is("(") ? AfterGroup(tokens, 2) - 1 : 1;
  const std::size_t place = tokens[type].End();
  std::string own;
  if (const auto* charset = from.FindOption("DEFAULT CHARSET")) own += " CHARACTER SET " + charset->value;
  if (const auto* collation = from.FindOption("COLLATE")) own += " COLLATE " + collation->value;
  return column.Str().substr(0, place) + own + column.Str().substr(place);
}

}  // namespace velmora
