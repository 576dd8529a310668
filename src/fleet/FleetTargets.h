// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The targets of a run: what the list says, with patterns expanded by what the servers list.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/DBConn.h"
#include "fleet/Lanes.h"
#include "fleet/TargetList.h"
#include "util/Errors.h"
#include "util/Lists.h"

namespace velmora {

// Where a database is, as far as that tells it from others.
struct TFleetPlace {
  std::string server;    // "HOST:PORT" or a socket's path; empty for files
  std::string database;  // or the path
};
TFleetPlace PlaceOf(TDBConn& conn);

struct TFleetTarget {
  std::string source;  // as MakeTarget takes it; may hold a password
  std::string name;    // "host.database", or the path; of a pattern whose server gave no list, the line
  std::string database;
  std::size_t lane = 0;
  bool on_server = false;
  std::optional<std::string> fault;  // why it is no target that can be worked on: of a pattern alone
  bool unreached = false;            // the fault is that its server was not reached
};

struct TFleetTargets {
  std::vector<TFleetTarget> targets;  // those of a pattern by their names, otherwise as listed
  TStringList notes;                  // what was left out: duplicates, the reference itself
};

// One of N shares of the targets: each is in one of them alone, by a digest of its name, whatever others there are.
struct TFleetSlice {
  std::size_t number = 1;  // from 1
  std::size_t of = 1;
  bool Takes(const std::string& name) const;
};
TFleetSlice ReadSlice(const std::string& text);  // "2/8"; raises for what is none

// Asks the servers of patterns for their databases, a server once; those of the system are no targets. What is there
// twice is taken once, and `reference` is left out. `path` is that of the list, for notes.
TFleetTargets ExpandTargets(const std::string& path, const std::vector<TListedSource>& list,
                            const TSourceSettings& settings, const TFleetPlace& reference, const TFleetSlice& slice,
                            TLanes& lanes);

// Whether an error of a login says that the server cannot be reached, whatever the database.
bool IsUnreachable(const EMySqlException& error);

}  // namespace velmora
