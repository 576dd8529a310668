#include "exact/ElementText.h"

#include <cstddef>

#include "exact/ColumnType.h"
#include "exact/Equivalences.h"
#include "exact/KeyText.h"
#include "exact/Lexer.h"
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
  if (range.last - range.first > 2 && tokens[range.first + 1].Is("(")) {
    part.length = TryStrToInt(tokens[range.first + 2].text).value_or(0);
  }
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
  for (const TTokenRange range : ListParts(tokens, FirstBracket(tokens))) {
    parts.push_back(ReadPart(key.text, tokens, range));
  }
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
