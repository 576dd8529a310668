// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Views, triggers, routines and events that the target cannot have as the reference has them: its server is of another
// product or release, or what they name is left alone.

#include <set>
#include <string>
#include <vector>

#include "exact/compare/Collations.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/objects/ObjectChanges.h"

namespace velmora {

// A table that the target does not get as the reference has it.
struct TTableNotMade {
  std::string name;
  std::string why;                // "is skipped"
  bool there = false;             // the target has one of this name, and keeps it
  std::set<std::string> lacks{};  // names of the reference's columns and keys, in lower case, that it does not have
};

// Says of the reference's objects, before they are compared, in words of the target's server what has an exact
// equivalent there, modes and collations under which they were made included. The rest stays as it is.
void TranslateObjects(const TServerPair& servers, const TDatabaseObjects& target, TDatabaseObjects& reference);
void MapCollations(const TCollationMap& map, TDatabaseObjects& reference);

// What stands in the way of changes.
struct TObjectObstacles {
  const TServerPair& servers;
  const std::vector<TTableNotMade>& tables;
  TKnownSets& sets;  // of the target's server
};
// Tells as a difference, with the reason, what the target's server does not have words for, as far as that is known
// without asking it, and what names a table that the target does not get, or an object that is not made.
void LeaveWhatCannotBe(const TObjectObstacles& obstacles, const TDatabaseObjects& reference,
                       const TDatabaseObjects& target, TObjectComparison& objects);

}  // namespace velmora
