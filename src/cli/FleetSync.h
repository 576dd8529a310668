// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Many targets made equal to one reference.

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "cli/FleetRun.h"
#include "cli/RunOptions.h"

namespace velmora {

// What `sync --targets` is asked.
struct TFleetSyncWishes {
  TFleetSyncOptions fleet{};
  bool yes = false;
  bool allow_unsafe = false;
  bool row_checks = true;
  int row_check_time = 0;  // seconds
  TRunOptions run{};       // the journal and the way back are folders, with a file for each target
};

// Runs the groups one after the other, and within a group the targets side by side. Each target is compared again at
// its turn, gets the script of this comparison, and is compared once more after it.
class TFleetSync {
 public:
  TFleetSync(TFleetRun& run, TFleetSyncWishes wishes) : run_(run), wishes_(std::move(wishes)) {}

  int Execute();  // gives the exit status

 private:
  class TRunning;
  class THost;
  class TTurn;

  void CheckNames() const;
  bool MayRun();
  std::string Summary() const;
  void RunGroups();
  void RunGroup(const TFleetGroup& group);
  void RunOne(std::size_t target, const TFleetGroup& group);
  void TellLost(std::size_t target, const std::string& reason);
  void TellNotBegun();
  int Status() const;

  TFleetRun& run_;
  TFleetSyncWishes wishes_;
  std::atomic<bool> stop_ = false;  // nothing more begins
  THost* host_ = nullptr;           // while groups run
};

}  // namespace velmora
