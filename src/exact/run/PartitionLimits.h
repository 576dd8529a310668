// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Which rows a partitioning has no place for.

#include <string>
#include <vector>

#include "mysqltext/Lexer.h"

namespace velmora {

struct TPartitionLimits {
  TTokenRange expression;  // what rows are distributed by: places of tokens
  bool several = false;    // which is more than one column
  // Of rows without a place, "%s" for the value of the expression; empty where every row has one.
  std::string condition;
};
// Of a text from "partition by" on, by its tokens.
TPartitionLimits ReadPartitionLimits(const std::string& text, TTokens tokens);

}  // namespace velmora
