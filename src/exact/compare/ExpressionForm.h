#pragma once

// Expressions of checks, generated columns, defaults and keys: servers print them in spellings of their own.

#include <optional>
#include <string>
#include <string_view>

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
};

// Nothing for what cannot be read to its end. Bounded in depth, to which operators in a row count.
std::optional<TExpressionForm> ReadExpressionForm(TTokens tokens, const TExpressionReading& reading = {});

// Whether MySQL and MariaDB both have the function, in lower case, and print calls of it alike but for what the form of
// an expression settles; true for words that are no functions and may stand before a bracket.
bool IsSharedFunction(std::string_view name);

}  // namespace velmora
