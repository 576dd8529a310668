// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Many targets opened and compared for one command.

#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/FleetOptions.h"
#include "cli/SourceOptions.h"
#include "fleet/Fleet.h"
#include "sync/Progress.h"

namespace velmora {

// What follows a comparison: in a sync it is not the last word on targets that differ.
enum class EFleetUse { Compare, Script, Sync };

class TFleetRun {
 public:
  TFleetRun(const TPair& pair, const TSourceOptions& sources, const TFleetOptions& options, EFleetUse use,
            EFormat format, TConsole& console);

  // Reads the list and the reference, and compares all targets. In JSON a line goes out as each one ends. Raises where
  // nothing can be compared.
  void Compare();
  // What failed, to the error side, and the groups, which JSON has in its summary.
  void TellGroups();
  void TellSummary();
  // What is to be said of a target: lines of a console, and an error. For any thread.
  void TellOf(std::size_t target, const std::string& told, const std::string& error);
  // Writes the groups' scripts to the folder, and tells the same with their names in place of what differs.
  void WriteScripts(const std::string& folder);
  // Of the scripts: 0 where each leaves nothing that a comparison would find.
  int ScriptStatus() const;
  int Status() const;  // 2 where something failed, else 1 where something differs, else 0

  TFleet& fleet() { return *fleet_; }
  TLanes& lanes() { return lanes_; }
  TConsole& console() { return console_; }

 private:
  void TellFaults();
  void ReadReference();
  TFleetTargets ReadTargets();
  TSourceSettings TargetSettings();
  void TellEnded(std::size_t target, const TFleetOutcome& outcome);

  const TPair& pair_;
  const TSourceOptions& sources_;
  const TFleetOptions& options_;
  EFleetUse use_;
  EFormat format_;
  TConsole& console_;
  TFleetWishes wishes_;
  TLanes lanes_;
  std::unique_ptr<TProgress> progress_;
  bool comparing_ = false;
  std::mutex mutex_;  // of the console's error side, and of what the settings' calls touch
  std::map<std::string, std::string> passwords_;
  std::set<std::string> warned_;
  TSourceSettings settings_;
  std::unique_ptr<TFleetReference> reference_;
  std::unique_ptr<TFleet> fleet_;
};

}  // namespace velmora
