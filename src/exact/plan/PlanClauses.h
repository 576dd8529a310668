// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What an "alter table" of the plan is put together from: the clauses that changes of one table need.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "exact/compare/Changes.h"
#include "exact/plan/Plan.h"

namespace velmora {

// A foreign key that does not change itself, and the changes that cannot be made while it is there.
struct TObstacle {
  const TElement* key = nullptr;
  std::vector<const TChange*> causes;
};

struct TTableWork {
  std::string name;
  const TTableText* reference = nullptr;  // null for a side without the table
  const TTableText* target = nullptr;
  std::vector<const TChange*> changes;
  std::vector<TObstacle> obstacles;
  TPlanServer server{};
};

bool IsForeignKeyChange(const TChange& change);
bool IsColumnChange(const TChange& change);
bool IsPartitionChange(const TChange& change);
bool SetsOption(const TChange& change, std::string_view name);

std::string DropText(EElement kind, const std::string& name, const TPlanServer& server);  // "drop key `k`"
std::string Subject(const TChange& change);                                               // "key k"

// The number of the reference system that the column's shapes are of; empty for any.
std::string SridOf(const TElementText& column);

// An "alter table" as it grows; it may stay empty.
class TAlter {
 public:
  explicit TAlter(std::string table) : table_(std::move(table)) {}

  void Clause(std::string text) { clauses_.push_back(std::move(text)); }
  // For all clauses together, once.
  void Force();
  void AtEnd(std::string text) { end_ = std::move(text); }
  void CheckRows() { statement_.checks_on = true; }
  void Serves(const TChange& change);
  // For the statement that does what the change is about, as against those that clear its way.
  void Makes(const TChange& change);
  bool Empty() const { return clauses_.empty() && end_.empty(); }
  // Adds the statement to the plan; an empty one is none.
  void MoveTo(std::vector<TPlanStatement>& plan);

 private:
  std::string table_;
  std::vector<std::string> clauses_;
  std::string end_;
  TPlanStatement statement_;
};

// The statements about one table, in the order in which they run. Most changes are made by `main`.
struct TTableAlters {
  explicit TTableAlters(const std::string& table) : first(table), main(table), filled(table), later(table) {}

  // An element goes, comes, or is made anew, and the statements that do so serve `changes`, of which the first of them
  // makes `made`, if there is one. An empty text is none.
  void Replace(const TElement& had, const TElement& has, const TTableWork& work, const TChange* made,
               const std::vector<const TChange*>& changes);
  void MoveTo(std::vector<TPlanStatement>& plan);

  TAlter first;  // keys that have to be gone before `main`
  TAlter main;
  TPlanStatement filling;        // gives values to columns that cannot come with their defaults; empty for none
  TAlter filled;                 // defaults of these columns
  TAlter later;                  // options that wait for `main`
  std::vector<TAlter> fulltext;  // keys that `main` cannot add: servers make one at a time, and take one that goes and
                                 // comes again in one statement for the same one, whatever its parser
  bool adds_fulltext = false;    // `main` does
};

// Whether the column goes and comes again, as what the change makes of it cannot be made of it in place.
bool IsReplaced(const TChange& change, const TTableWork& work);

// The clauses for a key, check or period.
void ChangeElement(const TChange& change, const TTableWork& work, TTableAlters& alters);

// Whether a foreign key on the column has to be away for the change. Servers take new defaults and comments as it is.
bool DisturbsForeignKeys(const TChange& change, const TTableWork& work);

// The clauses for columns, each where it can be followed.
void AddColumnClauses(const TTableWork& work, TTableAlters& alters);

// Keys and checks that stay, but have to go and come again in the statement because of what columns become.
void RenewElements(const TTableWork& work, TTableAlters& alters);

// Whether servers refuse the change of a column while the check is there.
bool DisturbsCheck(const TChange& change, const TElement& check, const TTableWork& work);

// The clause for options; what has to wait for the statement goes to one after it.
void SetOptions(const TTableWork& work, TTableAlters& alters);

// The unique keys by hash that the table has once its changes are made.
std::vector<TElement> HashKeys(const TTableWork& work);

}  // namespace velmora
