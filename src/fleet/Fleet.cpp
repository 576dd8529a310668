// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/Fleet.h"

#include <algorithm>
#include <new>
#include <utility>

#include "app/Sources.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kNoMemory[] = "out of memory";
constexpr int kAccessDenied = 1045;

// What stands before the database.
std::string LoginOf(const TFleetTarget& target) { return target.source.substr(0, target.source.rfind('/')); }

double SecondsSince(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

std::unique_ptr<TDBConn> MakeAlone(const std::string& source, const TSourceSettings& settings) {
  std::unique_ptr<TDBConn> target = MakeTarget(source, settings);
  ForgetSocketOfOthers(*target);
  return target;
}

}  // namespace

void TFleet::Compare(std::vector<TFleetTarget> targets) {
  targets_ = std::move(targets);
  outcomes_.assign(targets_.size(), {});
  std::vector<std::size_t> lanes;
  for (const TFleetTarget& target : targets_) lanes.push_back(target.lane);
  const auto give_up = [this](std::size_t number, const std::string& reason) {
    Tell(number, {EFleetStatus::NotReached, {}, 0, 0, reason, 0});
  };
  lanes_.Run(lanes, {[this](std::size_t number) { CompareOne(number); }, give_up, {}});
  probes_.clear();
  Arrange();
}

std::unique_ptr<TFleetPair> TFleet::PairWith(const TFleetTarget& target) const {
  return std::make_unique<TFleetPair>(reference_.Engine(), MakeAlone(target.source, settings_), wishes_);
}

void TFleet::CompareOne(std::size_t number) {
  const auto begin = std::chrono::steady_clock::now();
  TFleetOutcome outcome;
  try {
    outcome = Look(number);
  } catch (const EUnreachable&) {
    throw;
  } catch (const EMySqlException& error) {
    outcome.status = EFleetStatus::Failed;
    outcome.error = error.what();
    const std::lock_guard lock(mutex_);
    if (error.Number() == kAccessDenied) refused_.emplace(LoginOf(targets_[number]), error.what());
  } catch (const EVelmora& error) {
    outcome.status = EFleetStatus::Failed;
    outcome.error = error.what();
  } catch (const std::bad_alloc&) {
    outcome.status = EFleetStatus::Failed;
    outcome.error = kNoMemory;
  }
  outcome.seconds = SecondsSince(begin);
  Tell(number, std::move(outcome));
}

TFleetOutcome TFleet::Look(std::size_t number) {
  const TFleetTarget& target = targets_[number];
  if (target.fault)
    return {target.unreached ? EFleetStatus::NotReached : EFleetStatus::Failed, {}, 0, 0, *target.fault, 0};
  if (const std::string refusal = RefusalOf(target); !refusal.empty()) RaiseError(refusal);
  if (Quick && target.on_server && identical_.Any() && IsIdentical(target)) return {EFleetStatus::Identical};
  const std::unique_ptr<TFleetPair> pair = PairWith(target);
  pair->Compare();
  if (pair->Identical()) {
    if (Quick) identical_.Learn(pair->Exact(), pair->Target());
    return {EFleetStatus::Identical};
  }
  TFleetFindings findings = pair->Findings();
  TFleetOutcome outcome{EFleetStatus::Different, findings.id, findings.changes, findings.unsafe};
  std::string shown = Show ? Show(pair->app()) : std::string();
  Take(number, std::move(findings), std::move(shown));
  return outcome;
}

// A login that was refused is not tried again: servers lock accounts, and hosts out, after some of these.
std::string TFleet::RefusalOf(const TFleetTarget& target) {
  const std::lock_guard lock(mutex_);
  const auto refused = refused_.find(LoginOf(target));
  return refused == refused_.end() ? std::string() : refused->second;
}

// What fails here is told by the comparison that follows.
bool TFleet::IsIdentical(const TFleetTarget& target) {
  try {
    return Probe(target);
  } catch (const EUnreachable&) {
    throw;
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora&) {
    return false;
  }
}

// A probe is kept for the next target of its server alone where no comparison follows: both would be connected at once.
bool TFleet::Probe(const TFleetTarget& target) {
  std::unique_ptr<TFleetProbe> probe = TakeProbe(target);
  const std::optional<std::string> facts = probe->Facts(target.database);
  if (!facts || !identical_.Contains(*facts)) return false;
  const std::lock_guard lock(mutex_);
  probes_.emplace(target.lane, std::move(probe));
  return true;
}

std::unique_ptr<TFleetProbe> TFleet::TakeProbe(const TFleetTarget& target) {
  std::unique_ptr<TDBConn> made = MakeAlone(target.source, settings_);
  auto* server = dynamic_cast<TDBConnMySQL*>(made.get());
  if (server == nullptr) RaiseAbstract();
  {
    const std::lock_guard lock(mutex_);
    const auto kept = probes_.find(target.lane);
    if (kept != probes_.end() && kept->second->IsFor(*server)) return std::move(probes_.extract(kept).mapped());
  }
  [[maybe_unused]] TDBConn* handed_over = made.release();
  std::unique_ptr<TDBConnMySQL> alone(server);
  try {
    return std::make_unique<TFleetProbe>(std::move(alone), counters_);
  } catch (const EMySqlException& error) {
    if (IsUnreachable(error)) throw EUnreachable(error.what());
    throw;
  }
}

// A group is told as its first target has it, whichever ends first.
void TFleet::Take(std::size_t number, TFleetFindings findings, std::string shown) {
  const std::lock_guard lock(mutex_);
  const auto [place, fresh] = group_of_.try_emplace(findings.id, groups_.size());
  if (fresh) groups_.emplace_back();
  TFleetGroup& group = groups_[place->second];
  if (!fresh && group.findings.structure != findings.structure) group.same_structure = false;
  if (fresh || number < group.targets.front()) {
    group.findings = std::move(findings);
    group.shown = std::move(shown);
    group.targets.insert(group.targets.begin(), number);
  } else {
    group.targets.push_back(number);
  }
}

void TFleet::Tell(std::size_t number, TFleetOutcome outcome) {
  outcomes_[number] = std::move(outcome);
  const std::lock_guard lock(mutex_);
  if (Ended) Ended(number, outcomes_[number]);
}

void TFleet::Arrange() {
  for (TFleetGroup& group : groups_) std::ranges::sort(group.targets);
  std::ranges::sort(groups_, [](const TFleetGroup& a, const TFleetGroup& b) {
    return a.targets.size() != b.targets.size() ? a.targets.size() > b.targets.size()
                                                : a.targets.front() < b.targets.front();
  });
}

}  // namespace velmora
