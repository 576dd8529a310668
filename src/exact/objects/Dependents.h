// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Views, triggers, routines and events that name what changes in tables.

#include <set>
#include <string>
#include <vector>

#include "exact/compare/Changes.h"
#include "exact/compare/Renames.h"
#include "exact/objects/ObjectChanges.h"

namespace velmora {

// Names, with each column that goes or changes and each table that goes, the target's objects that speak of it and stay
// as they are. Where it goes, that is unsafe: they work no longer. By words alone: what an object puts together when it
// runs is not seen.
void NameDependents(const TDatabaseObjects& target, const std::vector<TObjectChange>& objects,
                    std::vector<TChange>& changes);

// Names that its text speaks of, in lower case; none of a text that cannot be taken apart.
std::set<std::string> NamesSpokenOf(const TOtherObject& object);

// Triggers go with a table that is renamed. One that cannot be read stays as it is.
void FollowRename(const TRename& rename, TDatabaseObjects& objects);

}  // namespace velmora
