// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Names that stand where tables do, in queries, statements and bodies of routines.

#include <cstddef>
#include <vector>

#include "mysqltext/Lexer.h"

namespace velmora {

// Tables, views and names of "with", by words alone: what a statement puts together when it runs is not seen.
struct TTableMention {
  std::size_t at = 0;      // the place of the name's token
  bool qualified = false;  // by a database, whose name stands two tokens before
};

// In the order of the text. Behind "from", where a query or a deletion began within the same brackets, "join" and the
// commas of their list; behind "into", "update" and "table". `tokens` end with End.
std::vector<TTableMention> TableMentions(TTokens tokens);

// The places of what a query calls its tables, and of the names that "with" gives.
std::vector<std::size_t> TableAliases(TTokens tokens);

}  // namespace velmora
