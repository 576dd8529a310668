// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/Definers.h"

#include <algorithm>
#include <array>

#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoPolicy[] = "%s is no policy for definers: it must be ignore, compare, strip or 'map A@B=C@D'";
constexpr char kSecondPolicy[] = "%s: there is another policy for definers already";
constexpr std::string_view kMap = "map ";
constexpr std::string_view kCurrentUser = "current_user";

struct TPolicyWord {
  std::string_view word;
  EDefiners policy;
};
constexpr std::array<TPolicyWord, 3> kPolicies = {
    {{"ignore", EDefiners::Ignore}, {"compare", EDefiners::Compare}, {"strip", EDefiners::Strip}}};

// "A@B=C@D"; the sign stands outside quotes.
TDefinerRule ReadRule(std::string_view text) {
  const std::vector<TToken> tokens = Tokens(text);
  const auto sign = std::ranges::find_if(tokens, [](const TToken& token) { return token.Is("="); });
  if (sign == tokens.end()) return {};
  return {AccountOf(Trim(text.substr(0, sign->start))), AccountOf(Trim(text.substr(sign->End())))};
}

// A name or text token as servers have the name.
std::string PartOf(const TToken& token) { return token.kind == EToken::String ? ValueOf(token) : NameOf(token); }

}  // namespace

void TakeDefinerWish(std::string_view text, TDefinerWishes& wishes) {
  const auto settle = [&](EDefiners policy) {
    const bool another = wishes.policy != EDefiners::Ignore && wishes.policy != policy;
    if (another) RaiseError(Format(kSecondPolicy, std::string(text)));
    wishes.policy = policy;
  };
  for (const TPolicyWord& row : kPolicies)
    if (SameText(row.word, text)) return settle(row.policy);
  TDefinerRule rule;
  if (SameText(text.substr(0, kMap.size()), kMap)) rule = ReadRule(text.substr(kMap.size()));
  if (rule.from.empty() || rule.to.empty()) RaiseError(Format(kNoPolicy, std::string(text)));
  settle(EDefiners::Map);
  wishes.rules.push_back(std::move(rule));
}

std::vector<std::string> DefinerWishTexts(const TDefinerWishes& wishes) {
  std::vector<std::string> texts;
  for (const TPolicyWord& row : kPolicies)
    if (row.policy == wishes.policy && row.policy != EDefiners::Ignore) texts.emplace_back(row.word);
  for (const TDefinerRule& rule : wishes.rules)
    texts.push_back(std::string(kMap) + QuotedAccount(rule.from) + "=" + QuotedAccount(rule.to));
  return texts;
}

// Lexers take "@" and what follows apart; hosts without quotes may hold points and hyphens.
std::string AccountOf(std::string_view written) {
  const std::vector<TToken> tokens = Tokens(written);
  const TToken& first = tokens.front();
  if (first.kind == EToken::End) return {};
  if (IsKeyword(first, kCurrentUser)) return std::string(kCurrentUser) + "()";
  if (tokens.size() < 3 || !tokens[1].Is("@"))
    return first.End() == written.size() ? PartOf(first) : std::string(written);
  const TToken& host = tokens[2];
  const bool quoted = host.kind == EToken::Name || host.kind == EToken::String;
  const std::string host_text = quoted ? PartOf(host) : LowerText(Trim(written.substr(host.start)));
  return PartOf(first) + "@" + host_text;
}

std::string QuotedAccount(std::string_view account) {
  const std::size_t at = account.rfind('@');
  if (account == "current_user()") return std::string(account);
  if (at == std::string_view::npos) return QuotedName(account);
  return QuotedName(account.substr(0, at)) + "@" + QuotedName(account.substr(at + 1));
}

std::string MappedAccount(const std::string& account, const TDefinerWishes& wishes) {
  const auto rule = std::ranges::find(wishes.rules, account, &TDefinerRule::from);
  return wishes.policy == EDefiners::Map && rule != wishes.rules.end() ? rule->to : account;
}

}  // namespace velmora
