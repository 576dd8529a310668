// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What statements on tables do to a schema in memory.

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "exact/compare/ServerForm.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/Schema.h"

namespace velmora {

// Applies statements of the plan to a schema in memory, by reading their texts. Raises for one it does not understand.
// In what `server` differs only renames ask.
void ApplyStatement(const std::string& statement, TSchema& schema, const TServerTraits& server = {});

// An "alter table" as people write it, in whatever form servers take it: `tokens` are the statement's, its clauses
// begin at `first`. Raises for what it does not understand, and the table is what nobody knows then.
struct TAlterationEffects {
  std::string new_name;                                              // of the table; empty for none
  std::vector<std::pair<std::string, std::string>> renamed_columns;  // from, to
};
TAlterationEffects ApplyWrittenAlteration(const std::string& statement, const std::vector<TToken>& tokens,
                                          std::size_t first, const TServerTraits& server, TTableText& table);

}  // namespace velmora
