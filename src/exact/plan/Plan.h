// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The statements that make the changes, in the order in which servers take them.

#include <string>
#include <vector>

#include "exact/compare/Changes.h"
#include "exact/plan/LockClasses.h"
#include "mysqltext/Schema.h"

namespace velmora {

struct TPlanStatement {
  std::string text;                 // without ";"
  std::vector<int> actions;         // ids of the changes it serves
  std::vector<std::string> unsafe;  // reasons, "column c: ..." each
  std::string table;                // that it is about
  // Of a statement about no table: "view v", "trigger t", ...; "session" where it sets what others need.
  std::string object{};
  // Statements that restore what was there, should the server refuse it after one before it has taken that away.
  std::vector<std::string> put_back{};
  bool checks_on = false;  // it adds foreign keys to a table that may have rows, which the server is to look at
  ELockClass lock = ELockClass::None;
  std::string note{};  // what a script tells of it; empty for nothing
};

// In what servers differ that take the statements; neither where nobody knows.
struct TPlanServer {
  bool mysql = false;  // has "drop check", and lets go of a foreign key's own key where a fulltext key has its columns
  bool mariadb = false;                 // replaces triggers, routines and events in one statement
  int version = 0;                      // 101106 for 10.11.6
  bool asked = false;                   // it is connected, and has said what it has against a change
  bool unchecked_foreign_keys = false;  // rows were asked about: they need not be looked at by the statement
};

// 1. foreign keys that go, change, or stand on a column that changes (those come back at the end), 2. dropped tables,
// checks whose names other tables get, 3. partitioning that is taken away or loses its columns, 4. one "alter table"
// per table: options, columns dropped, then modified and added with first/after, keys dropped and added, checks,
// partitioning (what servers refuse in it has statements of its own before and after it, see TTableAlters), 5. new
// tables without foreign keys, 6. foreign keys added. Names in backticks. It holds what `changes` holds and nothing
// else: a change that was struck out leaves its statement.
std::vector<TPlanStatement> MakePlan(const std::vector<TChange>& changes, const TSchema& reference,
                                     const TSchema& target, const TPlanServer& server = {});

}  // namespace velmora
