// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Expressions of queries: those of tables, and what only queries have in them besides: queries, windows, aggregates.

#include <functional>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/KeyText.h"

namespace velmora {

// How the expressions of one "select" are read.
struct TQueryNames {
  std::string table{};  // the only one that names can be of: before a column it says nothing; empty for none such
  std::set<std::string> hidden{};  // columns, in lower case, before which it does
  // What a query within says, its brackets left out; one that is asked only whether it has rows.
  std::function<std::string(TTokenRange range, bool exists)> query{};
  // As TExpressionReading has it; with it, what cannot be read raises.
  std::function<std::string(const std::vector<std::string>& names, bool aggregated)> column{};
  std::function<bool(const std::string& name)> stored{};  // whether there is such a stored function, if that is known
  std::map<std::string, TTokenRange> windows{};           // by name in lower case: what stands in their brackets
};

// What the expression says, in a spelling of its own; the tokens of which it is a part are `tokens`. What is no
// expression that is known keeps its tokens. Of a condition no more is asked than whether it holds.
enum class EExpression { Value, Condition, JoinCondition };
std::string ExpressionMeaning(TTokens tokens, TTokenRange range, const TQueryNames& names,
                              EExpression kind = EExpression::Value);

// Parts of a range between commas outside brackets.
std::vector<TTokenRange> PartsOf(TTokens tokens, TTokenRange range);
// The first place from `range.first` on, outside brackets, of these words in a row; `range.last` for none.
std::size_t FindWords(TTokens tokens, TTokenRange range, std::initializer_list<std::string_view> words);
// "a desc, b"; "asc" says nothing.
std::string OrderMeaning(TTokens tokens, TTokenRange range, const std::function<std::string(TTokenRange)>& expression);
// Whether a query begins here, be it in brackets of its own.
bool StartsQuery(TTokens tokens, std::size_t at);

}  // namespace velmora
