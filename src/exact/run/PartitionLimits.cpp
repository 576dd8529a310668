// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/PartitionLimits.h"

#include <algorithm>

#include "mysqltext/KeyText.h"
#include "util/Format.h"
#include "util/Lists.h"

namespace velmora {

namespace {

bool Has(TTokens tokens, TTokenRange range, std::string_view word) {
  for (std::size_t at = range.first; at < range.last; ++at)
    if (IsKeyword(tokens[at], word)) return true;
  return false;
}

// The list of partitions: the group that begins with that word.
std::size_t FindList(TTokens tokens, std::size_t at) {
  while (at < tokens.size() && !(tokens[at].Is("(") && IsKeyword(TokenAt(tokens, at + 1), "partition")))
    at = AfterValue(tokens, at);
  return at;
}

// What stands in brackets after the words "values less than" or "values in" of a partition; nothing for none.
TTokenRange BoundOf(TTokens tokens, TTokenRange partition) {
  std::size_t at = partition.first;
  while (at < partition.last && !IsKeyword(tokens[at], "values")) ++at;
  while (at < partition.last && !tokens[at].Is("(")) ++at;
  if (at >= partition.last) return {};
  return {at + 1, AfterGroup(tokens, at) - 1};
}

std::string OutOfRange(const std::string& text, TTokens tokens, TTokenRange last) {
  const TTokenRange bound = BoundOf(tokens, last);
  const bool open = bound.first == bound.last || Has(tokens, last, "maxvalue");
  return open ? std::string() : "%s >= " + TextOf(text, tokens, bound.first, bound.last);
}

std::string OutOfLists(const std::string& text, TTokens tokens, const std::vector<TTokenRange>& partitions) {
  TStringList values;
  bool takes_null = false;
  for (const TTokenRange partition : partitions) {
    const TTokenRange bound = BoundOf(tokens, partition);
    if (bound.first == bound.last || Has(tokens, bound, "default")) return {};  // takes what the others do not
    for (const TTokenRange value : ListParts(tokens, bound.first - 1)) {
      const bool is_null = IsKeyword(tokens[value.first], "null");
      takes_null = takes_null || is_null;
      if (!is_null) values.push_back(TextOf(text, tokens, value.first, value.last));
    }
  }
  const std::string others = values.empty() ? "%s is not null" : "%s not in (" + JoinList(values, ", ") + ")";
  return takes_null ? others : "(%s is null or " + others + ")";
}

}  // namespace

TPartitionLimits ReadPartitionLimits(const std::string& text, TTokens tokens) {
  constexpr std::size_t kKind = 2;  // partition by range
  TPartitionLimits limits;
  const bool by_range = IsKeyword(TokenAt(tokens, kKind), "range");
  if (!by_range && !IsKeyword(TokenAt(tokens, kKind), "list")) return limits;
  const std::size_t open = NextBracket(tokens, kKind);
  const std::size_t after = AfterGroup(tokens, open);
  const std::size_t list = FindList(tokens, after);
  if (list >= tokens.size()) return limits;
  limits.expression = {open + 1, after - 1};
  limits.several = ListParts(tokens, open).size() > 1;
  const std::vector<TTokenRange> partitions = ListParts(tokens, list);
  limits.condition = by_range ? OutOfRange(text, tokens, partitions.back()) : OutOfLists(text, tokens, partitions);
  return limits;
}

}  // namespace velmora
