// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the statements of a plan cost those who work with their tables meanwhile, read from their texts.

#include <string>
#include <string_view>
#include <vector>

#include "exact/plan/LockClasses.h"
#include "mysqltext/TableText.h"

namespace velmora {

// A clause of an "alter table".
struct TLockClause {
  std::string text;
  std::vector<ELockChange> changes;  // what it is made of
  bool ends = false;                 // it stands at the end, without a comma before it: partitioning
  bool sets_charset = false;         // of the table
  std::string word;                  // what it is about: "column", "key", "constraint", "options", "partitioning"
  std::string name;                  // of that; empty for none
};

// Takes an "alter table" of the plan's form apart. `table` is the table before it; `checks` tells whether foreign key
// checks are on. A clause that is not understood is an unknown change. Nothing for another statement.
std::vector<TLockClause> LockClauses(const std::string& statement, const TTableText& table, bool checks);
std::string AlterOf(const std::string& table, const std::vector<TLockClause>& clauses);  // together again

TLockTraits LockTraitsOf(const TTableText& table);
// Whether the server makes these only by a copy, and has to be told so: MySQL gives a column of numbers to a table in
// place, and fails at that where it has several fulltext keys.
bool HasToBeCopied(const std::vector<TLockClause>& clauses, const TTableText& table, const TServerTraits& server);
ELockClass ClassOfClauses(const std::vector<TLockClause>& clauses, const TTableText& table,
                          const TServerTraits& server);
// Of any statement of a plan: None for one that is no "alter table".
ELockClass ClassOfStatement(const std::string& statement, const TTableText& table, const TServerTraits& server,
                            bool checks);

// The "alter table" with words that make the server refuse what it cannot do that way.
std::string WithAlgorithm(const std::string& statement, std::string_view algorithm, std::string_view lock = {});

}  // namespace velmora
