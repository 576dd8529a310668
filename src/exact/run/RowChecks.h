// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the rows that are there say to a script: equal rows under a new unique key, NULL where it is no longer allowed,
// rows without the one that a new foreign key wants, rows against a new check, rows without a place in new partitions,
// values that a computed column does not take. And whether the server takes tables without a primary key. The server is
// asked before the script runs, for it would stop in the middle, and a foreign key it would take unasked where checks
// are off.

#include <string>
#include <vector>

#include "core/DBConn.h"
#include "exact/plan/Plan.h"

namespace velmora {

struct TRowQuestion {
  std::string table;
  std::string subject;  // "unique key u", "column c", "foreign key f", "check c", "partitioning"
  // Gives two numbers: rows that stand in the way, and different values in them. Without "select". Empty where nothing
  // can be asked, and `answer` then says why.
  std::string sql;
  std::string answer;   // what it means that there are such rows; the numbers go into it
  bool needed = false;  // without an answer the script is not to run either: the server will not look
};
// The questions about `changes`, which lead from `target` to `reference`: of columns as they will be, and about
// primary keys of the other tables that `plan` alters for them, and foreign keys that it puts back. What can't collide
// is not asked about.
std::vector<TRowQuestion> RowQuestions(const std::vector<TChange>& changes, const TSchema& reference,
                                       const TSchema& target, const std::vector<TPlanStatement>& plan = {});

struct TRowFinding {
  std::string text;     // "t: column c: 2 rows with NULL, which ..."
  bool checked = true;  // otherwise nobody knows, and the text says why: "t: unique key u: not checked: ...". True for
                        // what was needed, too
};
// Asks them, each for at most `seconds`, after which the server stops; 0 for as long as it takes. Gives those to which
// there are such rows, and those that could not be answered. Raises when the connection is lost.
std::vector<TRowFinding> AskRows(const std::vector<TRowQuestion>& questions, TDBConn& server, int seconds);

}  // namespace velmora
