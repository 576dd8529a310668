// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What became of many targets: for people, and as lines of JSON.

#include <cstddef>
#include <iosfwd>
#include <string>

#include "cli/Json.h"
#include "fleet/Fleet.h"

namespace velmora {

const char* FleetStatusWord(EFleetStatus status);

// "shop", or where several targets have databases of this name "db1.shop": a name for each target.
TStringList ShortNames(const std::vector<TFleetTarget>& targets);

// "a, b, c and 4 more"
std::string CutList(const TStringList& names, std::size_t most);
TStringList NamesIn(const TFleetGroup& group, const TStringList& names);

// Each group with its targets and what differs, once.
void PrintGroups(const TFleet& fleet, std::ostream& out);
// "996 identical; 3 alike: 2 changes (shard7, shard19, shard31); 1 not reached"
std::string FleetSummary(const TFleet& fleet);

TJson FleetLine(const TFleetTarget& target, const TFleetOutcome& outcome, const std::string& error);
// `files` has the name of each group's script, and is empty where none is written.
TJson FleetSummaryLine(const TFleet& fleet, const TStringList& files = {});
// "group-01.sql: 2 changes for 3 targets (shard3, shard7, shard9)", a line each.
void PrintFiles(const TFleet& fleet, const TStringList& files, std::ostream& out);

}  // namespace velmora
