// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a rename does to the tables of a database, and the statement that makes it.

#include <string>

#include "exact/compare/Renames.h"
#include "exact/compare/ServerForm.h"
#include "exact/plan/LockClasses.h"
#include "mysqltext/Schema.h"

namespace velmora {

// Keys, expressions, foreign keys of all tables, and names that the server has made of the table's follow. Raises where
// the table or column is not there, or the new name is taken.
void ApplyRename(const TRename& rename, const TServerTraits& server, TSchema& schema);

// "rename table ...", or an "alter table" of this one table. MySQL renames no column that checks, other columns'
// expressions, those of keys, defaults or partitions are made of: these come again in the same statement, which it
// takes. Servers that have no "rename column" get "change column" with the definition that is there.
std::string RenameStatement(const TRename& rename, const TServerTraits& server, const TSchema& schema);

// What it costs others; None where nobody knows the server.
ELockClass RenameLock(const TRename& rename, const TServerTraits& server, const TSchema& schema);

}  // namespace velmora
