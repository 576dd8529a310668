// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What commands are asked about many targets.

#include <cstddef>
#include <string>

#include "cli/Command.h"
#include "fleet/FleetTargets.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library named it
class App;
}

namespace velmora {

struct TFleetOptions {
  std::size_t jobs = 4;  // connections to each server
  TFleetSlice slice{};
  bool compare_each = false;
};

// --targets and what goes with it; the list goes to `pair`.
void DeclareFleet(CLI::App& app, TPair& pair, TFleetOptions& options);

// What `sync` alone takes with --targets.
struct TFleetSyncOptions {
  std::size_t canary = 0;   // so many targets of a group run one by one before the others
  bool keep_going = false;  // past failures
};
void DeclareFleetSync(CLI::App& app, TFleetSyncOptions& options);

// Raises for what is asked of one target alone; `given` tells whether an option of this name was.
void CheckFleet(const TPair& pair, const CLI::App& app);

}  // namespace velmora
