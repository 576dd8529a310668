// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Statements on tables and indexes, read far enough to run them in another database: which tables they are about, and
// whether they stay within it.

#include <string>
#include <string_view>
#include <vector>

#include "util/Lists.h"

namespace velmora {

enum class ETableStatement {
  Other,  // not on tables or indexes, or on temporary tables
  Use,
  CreateDatabase,
  CreateTable,
  ReplaceTable,
  AlterTable,
  DropTable,
  RenameTable,
  CreateIndex,
  DropIndex
};

struct TTableName {
  std::string database;  // empty where none is written
  std::string table;
};

struct TTableStatement {
  ETableStatement kind = ETableStatement::Other;
  std::string database;  // of Use and CreateDatabase
  std::vector<TTableName>
      changes;                    // tables that are made, changed, renamed (both names) or dropped, the first one first
  std::vector<TTableName> reads;  // and those whose structure is looked at: create ... like
};

// Raises the faults of Tokens.
TTableStatement ReadTableStatement(std::string_view statement);

// The statement as it means the same in another database: without comments, and without `own`, the database of its
// file, in front of names. Raises for what reaches outside of a database, naming it: other databases, files and
// folders, other servers, rows of queries, engines that do any of that. `own` may be empty.
std::string TextForScratch(std::string_view statement, const std::string& own);

}  // namespace velmora
