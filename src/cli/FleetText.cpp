// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/FleetText.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <ostream>

#include "util/Counted.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kNamesInSummary = 5;
constexpr std::size_t kGroupsInSummary = 5;
constexpr std::size_t kNamesInGroup = 20;
constexpr double kMsInSecond = 1000;

std::size_t CountOf(const TFleet& fleet, EFleetStatus status) {
  return static_cast<std::size_t>(std::ranges::count(fleet.Outcomes(), status, &TFleetOutcome::status));
}

// "2 changes", "2 changes, 1 unsafe"
std::string ChangesOf(const TFleetFindings& findings) {
  const std::string text = Counted(findings.changes, "change");
  return findings.unsafe == 0 ? text : text + Format(", %d unsafe", findings.unsafe);
}

std::string Alike(const TFleetGroup& group) {
  return group.targets.size() == 1 ? "1 different" : Format("%d alike", group.targets.size());
}

}  // namespace

const char* FleetStatusWord(EFleetStatus status) {
  switch (status) {
    case EFleetStatus::Identical:
      return "identical";
    case EFleetStatus::Different:
      return "different";
    case EFleetStatus::NotReached:
      return "not_reached";
    case EFleetStatus::Failed:
      return "failed";
    case EFleetStatus::Synced:
      return "synced";
    default:
      return "not_begun";
  }
}

TStringList ShortNames(const std::vector<TFleetTarget>& targets) {
  std::map<std::string, int> count;
  for (const TFleetTarget& target : targets) ++count[target.database];
  TStringList names;
  for (const TFleetTarget& target : targets)
    names.push_back(ShownText(count[target.database] == 1 ? target.database : target.name));
  return names;
}

std::string CutList(const TStringList& names, std::size_t most) {
  if (names.size() <= most) return JoinList(names, ", ");
  const TStringList first(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(most));
  return Format("%s and %d more", JoinList(first, ", "), names.size() - most);
}

TStringList NamesIn(const TFleetGroup& group, const TStringList& names) {
  TStringList of;
  for (const std::size_t target : group.targets) of.push_back(names[target]);
  return of;
}

void PrintGroups(const TFleet& fleet, std::ostream& out) {
  const TStringList names = ShortNames(fleet.Targets());
  std::size_t number = 0;
  for (const TFleetGroup& group : fleet.Groups()) {
    out << Format("Group %d, %s: %s\n", ++number, Alike(group), CutList(NamesIn(group, names), kNamesInGroup));
    for (const std::string& remark : group.findings.remarks) out << "note: " << ShownText(remark) << '\n';
    out << group.shown << '\n';
  }
}

void PrintFiles(const TFleet& fleet, const TStringList& files, std::ostream& out) {
  const TStringList names = ShortNames(fleet.Targets());
  for (std::size_t i = 0; i < files.size(); ++i) {
    const TFleetGroup& group = fleet.Groups()[i];
    out << Format("%s: %s for %s (%s)\n", files[i].empty() ? "no script" : files[i], ChangesOf(group.findings),
                  Counted(group.targets.size(), "target"), CutList(NamesIn(group, names), kNamesInGroup));
  }
}

std::string FleetSummary(const TFleet& fleet) {
  const TStringList names = ShortNames(fleet.Targets());
  TStringList parts = {Format("%d identical", CountOf(fleet, EFleetStatus::Identical))};
  const std::vector<TFleetGroup>& groups = fleet.Groups();
  const std::size_t shown = std::min(groups.size(), kGroupsInSummary);
  for (std::size_t i = 0; i < shown; ++i)
    parts.push_back(Format("%s: %s (%s)", Alike(groups[i]), ChangesOf(groups[i].findings),
                           CutList(NamesIn(groups[i], names), kNamesInSummary)));
  std::size_t others = 0;
  for (std::size_t i = shown; i < groups.size(); ++i) others += groups[i].targets.size();
  if (others > 0) parts.push_back(Format("%d in %s more", others, Counted(groups.size() - shown, "group")));
  const std::pair<EFleetStatus, const char*> rest[] = {{EFleetStatus::Synced, "synced"},
                                                       {EFleetStatus::NotReached, "not reached"},
                                                       {EFleetStatus::Failed, "failed"},
                                                       {EFleetStatus::NotBegun, "not begun"}};
  for (const auto& [status, word] : rest)
    if (const std::size_t count = CountOf(fleet, status); count > 0) parts.push_back(Format("%d %s", count, word));
  return JoinList(parts, "; ");
}

TJson FleetLine(const TFleetTarget& target, const TFleetOutcome& outcome, const std::string& error) {
  return {{"target", target.name},
          {"status", FleetStatusWord(outcome.status)},
          {"group", outcome.group.empty() ? TJson() : TJson(outcome.group)},
          {"changes", outcome.changes},
          {"unsafe", outcome.unsafe},
          {"error", error.empty() ? TJson() : TJson(error)},
          {"ms", std::llround(outcome.seconds * kMsInSecond)}};
}

TJson FleetSummaryLine(const TFleet& fleet, const TStringList& files) {
  TJson groups = TJson::array();
  for (const TFleetGroup& group : fleet.Groups()) {
    TJson targets = TJson::array();
    for (const std::size_t target : group.targets) targets.push_back(fleet.Targets()[target].name);
    const std::size_t place = groups.size();
    groups.push_back({{"group", group.findings.id},
                      {"file", files.empty() || files[place].empty() ? TJson() : TJson(files[place])},
                      {"changes", group.findings.changes},
                      {"unsafe", group.findings.unsafe},
                      {"statements", group.findings.statements},
                      {"notes", group.findings.remarks},
                      {"shown", LinesOf(group.shown)},
                      {"targets", std::move(targets)}});
  }
  TJson summary = {{"targets", fleet.Targets().size()}};
  for (const EFleetStatus status : {EFleetStatus::Identical, EFleetStatus::Different, EFleetStatus::Synced,
                                    EFleetStatus::NotReached, EFleetStatus::Failed, EFleetStatus::NotBegun})
    summary[FleetStatusWord(status)] = CountOf(fleet, status);
  summary["groups"] = std::move(groups);
  return {{"summary", std::move(summary)}};
}

}  // namespace velmora
