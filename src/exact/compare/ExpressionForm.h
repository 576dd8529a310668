#pragma once

// Expressions of checks, generated columns, defaults and keys: servers print them in spellings of their own.

#include <optional>
#include <string>

#include "mysqltext/KeyText.h"

namespace velmora {

// What an expression says, whatever its brackets, the spelling of its operators and functions, and the form that
// servers give to "not" and to numbers as conditions.
struct TExpressionForm {
  std::string text;
  bool known = true;  // false where it holds what servers may print in yet another way
};

// Nothing for what cannot be read to its end. Bounded in depth, to which operators in a row count.
std::optional<TExpressionForm> ReadExpressionForm(TTokens tokens);

}  // namespace velmora
