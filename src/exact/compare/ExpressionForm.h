// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Expressions of checks, generated columns, defaults and keys: servers print them in spellings of their own.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/KeyText.h"

namespace velmora {

// What an expression says, whatever its brackets, the spelling of its operators and functions, and the form that
// servers give to "not" and to numbers as conditions.
struct TExpressionForm {
  std::string text;
  bool known = true;  // false where it holds what servers may print in yet another way
};

struct TExpressionReading {
  bool keeps_qualifiers = false;  // what stands before a column's name counts; without, the name alone
  bool condition = false;         // no more is asked than whether it holds: to be null is not to hold
  // What a column says of which these are the names, its own last; may raise. `aggregated`: of many rows, as in sum().
  std::function<std::string(const std::vector<std::string>& names, bool aggregated)> column{};
  bool joins = false;  // columns that are equal are so in any order
};

// Nothing for what cannot be read to its end, and where `column` raises. Bounded in depth, to which operators in a row
// count.
std::optional<TExpressionForm> ReadExpressionForm(TTokens tokens, const TExpressionReading& reading = {});

// Whether MySQL and MariaDB both have the function, in lower case, and print calls of it alike but for what the form of
// an expression settles; true for words that are no functions and may stand before a bracket.
bool IsSharedFunction(std::string_view name);

}  // namespace velmora
