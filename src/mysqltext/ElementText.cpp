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

namespace {

std::size_t FirstBracket(TTokens tokens) {
  std::size_t at = 0;
  while (at < tokens.size() && !tokens[at].Is("(")) ++at;
  return at;
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

bool IsKey(EElement kind) {
  return kind == EElement::PrimaryKey || kind == EElement::UniqueKey || kind == EElement::Key ||
         kind == EElement::FulltextKey || kind == EElement::SpatialKey;
}

std::vector<TKeyPart> KeyParts(const TElement& key) {
  const auto tokens = Tokens(key.text);
  std::vector<TKeyPart> parts;
  for (const TTokenRange range : ListParts(tokens, FirstBracket(tokens)))
    parts.push_back(ReadPart(key.text, tokens, range));
  return parts;
}

std::string KeyTextWithout(const TElement& key, std::string_view name) {
  const auto tokens = Tokens(key.text);
  const std::size_t open = FirstBracket(tokens);
  std::string kept;
  for (const TTokenRange range : ListParts(tokens, open)) {
    const TKeyPart part = ReadPart(key.text, tokens, range);
    if (SameText(part.column, name)) continue;
    kept += (kept.empty() ? "" : ",") + part.text;
  }
  if (kept.empty()) return {};
  const std::size_t close = BehindGroup(tokens, open) - 1;
  return key.text.substr(0, tokens[open].End()) + kept + key.text.substr(tokens[close].start);
}

TKeyUse SplitKeyUse(const std::string& key_text) {
  const auto tokens = Tokens(key_text);
  const std::size_t end = tokens.size() - 1;
  for (std::size_t at = BehindGroup(tokens, FirstBracket(tokens)); at < end; ++at) {
    const bool used = IsKeyword(tokens[at], "visible") || IsKeyword(tokens[at], "not");
    if (!used && !IsKeyword(tokens[at], "ignored") && !IsKeyword(tokens[at], "invisible")) continue;
    const std::size_t behind = IsKeyword(tokens[at], "not") ? std::min(at + 2, end) : at + 1;
    TKeyUse result{TextOf(key_text, tokens, 0, at), used ? "" : LowerText(tokens[at].text)};
    if (behind < end) result.text += " " + TextOf(key_text, tokens, behind, end);
    return result;
  }
  return {key_text, ""};
}

namespace {

bool IsSequenceCall(const TToken& token) {
  return IsKeyword(token, "nextval") || IsKeyword(token, "lastval") || IsKeyword(token, "setval");
}

}  // namespace

void MoveSequences(TTableText& table, const std::string& from, const std::string& to) {
  if (from.empty() || to.empty()) return;
  for (TElement& element : table.elements) {
    if (element.kind != EElement::Column || element.text.find("val(") == std::string::npos) continue;
    std::string text;
    std::size_t done = 0;
    const auto tokens = Tokens(element.text);
    for (std::size_t at = 0; at + 3 < tokens.size(); ++at) {
      const TToken& database = tokens[at + 2];
      if (!IsSequenceCall(tokens[at]) || !tokens[at + 1].Is("(") || !tokens[at + 3].Is(".")) continue;
      if (!IsName(database) || NameOf(database) != from) continue;
      text += element.text.substr(done, database.start - done) + QuotedName(to);
      done = database.End();
    }
    if (done > 0) element.text = text + element.text.substr(done);
  }
}

std::string WithHexDefault(std::string column_text) {
  const auto wide = [](char c) { return static_cast<unsigned char>(c) > 0x7F; };
  if (std::none_of(column_text.begin(), column_text.end(), wide)) return column_text;
  const std::vector<TToken> all = Tokens(column_text);
  const TColumnParts parts = ReadColumnParts(TTokens(all.data(), all.size() - 1));
  if (!InList(parts.type, {"binary", "varbinary"}) || !parts.default_value) return column_text;
  const TToken& value = all[parts.default_value->first];
  if (value.kind != EToken::String || !PrefixOf(value).empty()) return column_text;
  std::string hex;
  for (const char c : ValueOf(value)) hex += Format("%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
  return column_text.replace(value.start, value.text.size(), "x'" + hex + "'");
}

std::string PinnedColumnText(const TElement& column, const TTableText& from, const TTableText& to) {
  if (TableCharset(from) == TableCharset(to)) return column.text;
  const TColumnText here = ReadColumnText(column, from);
  if (!here.HasLetters() || SameCharset(here.charset, ReadColumnText(column, to).charset)) return column.text;

  // What is inherited stands nowhere in the text, so its own place is free: behind the type and its brackets.
  const auto tokens = Tokens(column.text);
  const std::size_t type = TokenAt(tokens, 2).Is("(") ? BehindGroup(tokens, 2) - 1 : 1;
  const std::size_t place = tokens[type].End();
  std::string own;
  if (const auto* charset = from.FindOption("DEFAULT CHARSET")) own += " CHARACTER SET " + charset->value;
  if (const auto* collation = from.FindOption("COLLATE")) own += " COLLATE " + collation->value;
  return column.text.substr(0, place) + own + column.text.substr(place);
}

}  // namespace velmora
