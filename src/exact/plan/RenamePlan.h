// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a rename does to the tables of a database, and the statement that makes it.

#include <string>
#include <vector>

#include "exact/compare/Renames.h"
#include "exact/compare/ServerForm.h"
#include "exact/plan/LockClasses.h"
#include "exact/plan/Plan.h"
#include "mysqltext/Schema.h"

namespace velmora {

// Keys, expressions, foreign keys of all tables, and names that the server has made of the table's follow. Raises where
// the table or column is not there, or the new name is taken.
void ApplyRename(const TRename& rename, const TServerTraits& server, TSchema& schema);

// "rename table ...", or an "alter table" of this one table. MySQL renames no column that checks, other columns'
// expressions, those of keys, defaults or partitions are made of: these come again in the same statement, which it
// takes. Servers that have no "rename column" get "change column" with the definition that is there.
std::string RenameStatement(const TRename& rename, const TServerTraits& server, const TSchema& schema);

// A key or foreign key of a table.
struct TTableKey {
  std::string table;
  const TElement* key;  // within the schema
};
// Those that have to be away while a column gets its other name: servers do not copy a table while they rename a column
// of its foreign keys, on either side, and MariaDB leaves the old name in keys that refer to a virtual one.
// It also breaks some tables with virtual columns and keys of first letters.
std::vector<TTableKey> KeysInTheWay(const TRename& rename, const TServerTraits& server, const TSchema& schema);

// The statement, between those that take such keys away and bring them back, to rows that the server looks at unless
// `unchecked`.
std::vector<TPlanStatement> RenameStatements(const TRename& rename, const TServerTraits& server, const TSchema& schema,
                                             bool unchecked);

// What it costs others; None where nobody knows the server.
ELockClass RenameLock(const TRename& rename, const TServerTraits& server, const TSchema& schema);

}  // namespace velmora
