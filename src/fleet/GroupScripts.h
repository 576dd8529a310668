// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A script for each group of targets that are alike, in a folder of its own.

#include <string>

#include "app/OwnFolder.h"
#include "fleet/Fleet.h"

namespace velmora {

// The files of the groups, "group-01.sql" and so on by their places in the fleet, empty for one without statements.
TStringList GroupFiles(const TFleet& fleet);

// Says in its first lines for which targets it is, and runs on each of them as it does on the first. The same groups
// give the same text whenever it is written.
std::string GroupScript(const TFleet& fleet, const TFleetGroup& group, const std::string& reference);

// The folder; raises for one that holds scripts of others.
TOwnFolder GroupFolder(const std::string& folder);
// Replaces what changes, and removes what groups of an earlier run have left.
TFolderChanges WriteGroups(const TFleet& fleet, const std::string& reference, TOwnFolder& folder);

}  // namespace velmora
