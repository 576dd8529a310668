// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/Collations.h"

#include <algorithm>
#include <optional>
#include <set>

#include "exact/compare/Safety.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnknown[] =
    "the target's server does not know the %s %s (--map-collation %s=NAME takes one that it knows)";
constexpr char kNoMapping[] = "two names are wanted, as in utf8mb4_0900_ai_ci=utf8mb4_unicode_ci; not \"%s\"";
constexpr char kOtherCharset[] =
    "%s and %s are of different character sets; a collation is replaced by one of the same set";

struct TNamedSet {
  std::size_t token;  // the name's
  bool collation;
};

// Whether a column may begin here, whose name may be such a word.
bool BeginsElement(TTokens tokens, std::size_t at) {
  return at == 0 || tokens[at - 1].Is("(") || tokens[at - 1].Is(",");
}

// The name that follows "charset", "character set" or "collate" at `at`.
std::optional<TNamedSet> NameAfter(TTokens tokens, std::size_t at) {
  const bool two_words = IsKeyword(tokens[at], "character") && IsKeyword(TokenAt(tokens, at + 1), "set");
  if (!two_words && !IsKeyword(tokens[at], "charset") && !IsKeyword(tokens[at], "collate")) return std::nullopt;
  std::size_t name = at + (two_words ? 2 : 1);
  if (TokenAt(tokens, name).Is("="))
    ++name;
  else if (BeginsElement(tokens, at))
    return std::nullopt;
  const TToken& token = TokenAt(tokens, name);
  if (!IsName(token) && token.kind != EToken::String) return std::nullopt;
  return TNamedSet{name, IsKeyword(tokens[at], "collate")};
}

std::string WrittenName(const TToken& token) { return token.kind == EToken::String ? ValueOf(token) : NameOf(token); }

std::string SetName(const std::string& written, bool collation) {
  return collation ? CollationName(written) : CharsetName(written);
}

template <class Visit>
void EachName(std::string_view text, Visit visit) {
  const std::vector<TToken> tokens = Tokens(text);
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at)
    if (const std::optional<TNamedSet> name = NameAfter(tokens, at)) visit(tokens[name->token], name->collation);
}

struct TSetName {
  std::string name;
  bool collation;
  auto operator<=>(const TSetName&) const = default;  // NOLINT(modernize-use-nullptr): there is no pointer
};

std::set<TSetName> NamesIn(const std::string& text) {
  std::set<TSetName> names;
  try {
    EachName(text, [&](const TToken& token, bool collation) {
      names.insert({LowerText(WrittenName(token)), collation});
    });
  } catch (const EVelmora&) {  // what can't be read has been told already
  }
  return names;
}

// A collation without a set's name before it, as uca1400_ai_ci, is one of Unicode.
std::string CharsetOf(const std::string& collation) {
  const std::string charset = NamedCharset("", collation).charset;
  return charset.starts_with("uca") ? "utf8mb4" : charset;
}

bool ServerKnows(TDBConn& server, const TSetName& set) {
  constexpr int kUnknownCharset = 1115;
  constexpr int kUnknownCollation = 1273;
  const std::string charset = set.collation ? CharsetOf(set.name) : set.name;
  const std::string collate = set.collation ? " collate " + QuotedName(set.name) : "";
  try {
    TVariant answer;
    server.GetResultSQL(Format("select convert('' using %s)%s", QuotedName(charset), collate), answer);
  } catch (const EMySqlException& error) {
    if (!server.GetConnected()) throw;
    return error.Number() != kUnknownCharset && error.Number() != kUnknownCollation;
  } catch (const EVelmora&) {  // a file, which takes whatever it is given
    if (!server.GetConnected()) throw;
  }
  return true;
}

bool IsPlainName(std::string_view name) {
  return !name.empty() &&
         std::ranges::all_of(name, [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_'; });
}

}  // namespace

bool TKnownSets::Knows(const std::string& name, bool collation) {
  const auto [entry, fresh] = known_.emplace(std::pair(name, collation), true);
  if (!fresh) return entry->second;
  const bool used = texts_ != nullptr && std::ranges::any_of(*texts_, [&name](const auto& table) {
                      return table.second.find(name) != std::string::npos;
                    });
  return entry->second = used || ServerKnows(server_, {name, collation});
}

std::string TKnownSets::UnknownIn(const std::string& text) {
  std::string reasons;
  for (const TSetName& set : NamesIn(text))
    if (!Knows(set.name, set.collation))
      AddReason(reasons, Format(kUnknown, set.collation ? "collation" : "character set", set.name, set.name));
  return reasons;
}

std::string TKnownSets::UnknownCollation(const std::string& name) {
  return Knows(name, true) ? std::string() : Format(kUnknown, "collation", name, name);
}

void AddToCollationMap(const std::string& mapping, TCollationMap& map) {
  const std::size_t sign = mapping.find('=');
  const std::string from = LowerText(TrimView(std::string_view(mapping).substr(0, sign)));
  const std::string to =
      sign == std::string::npos ? "" : LowerText(TrimView(std::string_view(mapping).substr(sign + 1)));
  if (!IsPlainName(from) || !IsPlainName(to)) RaiseError(Format(kNoMapping, mapping));
  const bool collations = from.find('_') != std::string::npos || to.find('_') != std::string::npos;
  if (collations && CharsetOf(CollationName(from)) != CharsetOf(CollationName(to)))
    RaiseError(Format(kOtherCharset, from, to));
  map[SetName(from, collations)] = to;
}

void MapCollations(const TCollationMap& map, std::string& ddl) {
  if (map.empty()) return;
  std::string mapped;
  std::size_t done = 0;
  EachName(ddl, [&](const TToken& token, bool collation) {
    const auto found = map.find(SetName(WrittenName(token), collation));
    if (found == map.end()) return;
    mapped += ddl.substr(done, token.start - done) + found->second;
    done = token.End();
  });
  if (done > 0) ddl = mapped + ddl.substr(done);
}

void MarkUnknownCollations(TDBConn& target, const std::map<std::string, std::string>& texts,
                           std::vector<TChange>& changes) {
  TKnownSets known(target);
  known.Believe(texts);
  for (TChange& change : changes) AddReason(change.unsafe, known.UnknownIn(change.new_text.Str()));
}

}  // namespace velmora
