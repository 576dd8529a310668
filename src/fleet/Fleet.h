// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Many targets compared with one reference, side by side, and put together by what differs.

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "fleet/FleetPair.h"
#include "fleet/FleetProbe.h"
#include "fleet/FleetReference.h"
#include "fleet/FleetTargets.h"
#include "fleet/Lanes.h"

namespace velmora {

enum class EFleetStatus { NotBegun, Identical, Different, NotReached, Failed, Synced };

// What became of a target.
struct TFleetOutcome {
  EFleetStatus status = EFleetStatus::NotBegun;
  std::string group{};      // the id of what differs; empty where nothing does
  std::size_t changes = 0;  // actions
  std::size_t unsafe = 0;   // of them
  std::string error{};
  double seconds = 0;
};

// Targets that are alike, and what is told of all of them as it is of the first.
struct TFleetGroup {
  TFleetFindings findings;
  std::string shown;                 // by TFleet::Show
  std::vector<std::size_t> targets;  // their numbers, rising once all were compared
  bool same_structure = true;        // all of them have the structure that the findings tell
};

class TFleet {
 public:
  // `settings` are those of targets; whatever they call is called by several threads. All outlive this object.
  TFleet(const TFleetReference& reference, const TFleetWishes& wishes, const TSourceSettings& settings, TLanes& lanes)
      : reference_(reference),
        wishes_(wishes),
        settings_(settings),
        lanes_(lanes),
        counters_(!wishes.comparison.exact.strict.empty()),
        identical_(counters_) {}

  bool Quick = true;  // targets that are known to be identical without a comparison are not compared
  // What people are shown of a comparison, by the thread that has done it.
  std::function<std::string(const TApplication& compared)> Show;
  // Called with each target as it ends; by several threads, one at a time.
  std::function<void(std::size_t target, const TFleetOutcome& outcome)> Ended;

  // Compares all of them. What fails for one is told in its outcome.
  void Compare(std::vector<TFleetTarget> targets);

  // What became of a target later; for any thread.
  void Tell(std::size_t number, TFleetOutcome outcome);

  const std::vector<TFleetTarget>& Targets() const { return targets_; }
  const std::vector<TFleetOutcome>& Outcomes() const { return outcomes_; }
  // The largest first, of equal ones the one with the first target.
  const std::vector<TFleetGroup>& Groups() const { return groups_; }

  // A pair of the reference and a target, not compared. For any thread.
  std::unique_ptr<TFleetPair> PairWith(const TFleetTarget& target) const;

 private:
  void CompareOne(std::size_t number);
  TFleetOutcome Look(std::size_t number);
  std::string RefusalOf(const TFleetTarget& target);
  bool IsIdentical(const TFleetTarget& target);
  bool Probe(const TFleetTarget& target);
  std::unique_ptr<TFleetProbe> TakeProbe(const TFleetTarget& target);
  void Take(std::size_t number, TFleetFindings findings, std::string shown);
  void Arrange();

  const TFleetReference& reference_;
  const TFleetWishes& wishes_;
  const TSourceSettings& settings_;
  TLanes& lanes_;
  std::vector<TFleetTarget> targets_;    // does not change while targets are compared
  std::vector<TFleetOutcome> outcomes_;  // each written by the thread of its target alone
  bool counters_;  // AUTO_INCREMENT is looked at: something is to count that is otherwise taken as equal
  TIdenticalTargets identical_;
  std::mutex mutex_;  // of all below, and of Ended
  std::map<std::string, std::size_t> group_of_;
  std::vector<TFleetGroup> groups_;
  std::multimap<std::size_t, std::unique_ptr<TFleetProbe>> probes_;  // at rest, by lane
  std::map<std::string, std::string> refused_;                       // logins, and what the server said
};

}  // namespace velmora
