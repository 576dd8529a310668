// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/MissingSequences.h"

#include <cstddef>
#include <vector>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kMissing[] =
    "column %s counts by sequence %s, which the target does not have: sequences are left alone, make it by hand";

// "nextval(s)", "next value for d.s": where the name begins; the end for none.
std::size_t NameAt(TTokens tokens, std::size_t at) {
  const auto is = [&](std::size_t place, std::string_view word) { return IsKeyword(TokenAt(tokens, place), word); };
  if (is(at, "nextval") || is(at, "lastval") || is(at, "setval"))
    return TokenAt(tokens, at + 1).Is("(") ? at + 2 : tokens.size();
  const bool said = (is(at, "next") || is(at, "previous")) && is(at + 1, "value") && is(at + 2, "for");
  return said ? at + 3 : tokens.size();
}

}  // namespace

bool MayNameSequence(std::string_view text) {
  return text.find("val(") != std::string_view::npos || PosNoCase("value for", text) > 0;
}

std::string TMissingSequences::WhyNot(const TTableText& wanted, const TTableText* there) {
  for (const TElement& element : wanted.elements) {
    if (element.kind != EElement::Column || !MayNameSequence(element.text.Str())) continue;
    const TElement* same = there == nullptr ? nullptr : there->Find(element.kind, element.name);
    if (same != nullptr && same->text.Str() == element.text.Str()) continue;
    const TTokens tokens = element.text.Tokens();
    for (std::size_t at = 0; at < tokens.size(); ++at) {
      std::size_t name = NameAt(tokens, at);
      if (name >= tokens.size() || !IsName(tokens[name])) continue;
      const bool qualified = TokenAt(tokens, name + 1).Is(".");
      const std::string database = qualified ? NameOf(tokens[name]) : std::string();
      if (qualified) name += 2;
      const std::string sequence = NameOf(TokenAt(tokens, name));
      if (IsThere(database, sequence)) continue;
      return Format(kMissing, element.name, qualified ? Format("%s.%s", database, sequence) : sequence);
    }
  }
  return {};
}

bool TMissingSequences::IsThere(const std::string& database, const std::string& name) {
  const auto [known, added] = asked_.try_emplace({database, name});
  if (!added) return known->second;
  TVariant count;
  server_.GetResultSQL(Format("select count(*) from information_schema.tables where table_type = 'SEQUENCE' and "
                              "table_schema = %s and table_name = %s",
                              database.empty() ? "database()" : QuotedText(database), QuotedText(name)),
                       count);
  return known->second = VarToText(count) != "0";
}

}  // namespace velmora
