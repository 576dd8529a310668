// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DifferenceList.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <tuple>
#include <unordered_map>

#include "util/Counted.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

bool WholeTable(const TDifference& difference) { return difference.kind == EDifferenceKind::Table; }

// "3 new, 1 obsolete, 8 changed" without what there is none of.
std::string StateCounts(const std::map<std::string, EDifferenceState>& tables) {
  TStringList parts;
  for (const auto state : {EDifferenceState::New, EDifferenceState::Obsolete, EDifferenceState::Changed}) {
    const auto count = std::ranges::count(tables, state, [](const auto& entry) { return entry.second; });
    if (count > 0) parts.push_back(Format("%d %s", count, std::string(StateWord(state))));
  }
  return JoinList(parts, ", ");
}

}  // namespace

// --- The differences

// The same for a difference that is found again.
std::string TDifferenceList::Mark(const TEntry& entry) {
  return Format("%d\n%s\n%s\n%s", entry.row.action_id, entry.difference.table, entry.difference.item,
                entry.row.description);
}

bool TDifferenceList::TicksAgain(const TEntry& entry) const {
  if (ticked_.empty() && unticked_.empty()) return entry.ticked_at_first;
  const std::string mark = Mark(entry);
  return !unticked_.contains(mark) && (entry.ticked_at_first || ticked_.contains(mark));
}

void TDifferenceList::Take(std::vector<TDifference> found, const std::function<bool(const TDifference&)>& ticks) {
  Clear();
  entries_.reserve(found.size());
  for (TDifference& difference : found) {
    const TActionRow* row = data_.mtActions.Find(difference.id);
    if (row == nullptr) continue;
    std::string words = FilteredWords(difference);
    std::string table = LowerText(difference.table);
    std::string item = LowerText(difference.item);
    entries_.push_back({std::move(difference), *row, std::move(table), std::move(item), std::move(words)});
    TEntry& entry = entries_.back();
    entry.ticked_at_first = !ticks || ticks(entry.difference);
    entry.unticked_before = unticked_.contains(Mark(entry));
    if (!TicksAgain(entry)) Set(entries_.size() - 1, EDecision::Unticked);
  }
  ticked_.clear();
  unticked_.clear();
  std::ranges::sort(entries_, {}, [](const TEntry& entry) { return entry.difference.id; });
  Sort();
}

void TDifferenceList::Forget() {
  Clear();
  ticked_.clear();
  unticked_.clear();
}

void TDifferenceList::Clear() {
  for (const TEntry& entry : entries_) {
    const bool by_user = entry.ticked_at_first || entry.unticked_before;
    if (entry.decision == EDecision::Unticked && by_user) unticked_.insert(Mark(entry));
    if (entry.decision == EDecision::Ticked && !entry.ticked_at_first) ticked_.insert(Mark(entry));
  }
  entries_.clear();
  steps_.clear();
  done_ = 0;
  sorted_.clear();
  groups_.clear();
}

std::optional<std::size_t> TDifferenceList::PlaceOf(int id) const {
  const auto entry = std::ranges::lower_bound(entries_, id, {}, [](const TEntry& e) { return e.difference.id; });
  if (entry == entries_.end() || entry->difference.id != id) return std::nullopt;
  return static_cast<std::size_t>(entry - entries_.begin());
}

// --- Decisions

void TDifferenceList::Set(std::size_t place, EDecision decision) {
  TEntry& entry = entries_[place];
  entry.decision = decision;
  if (decision == EDecision::Ticked)
    data_.mtActions.Restore(entry.row);
  else
    data_.mtActions.Delete(entry.row.id);
}

bool TDifferenceList::Decide(const std::vector<std::size_t>& places, EDecision to) {
  TStep step;
  for (const std::size_t place : places)
    if (const EDecision from = Decision(place); from != to && from != EDecision::Deleted)
      step.push_back({place, from, to});
  if (step.empty()) return false;
  for (const TDecided& decided : step) Set(decided.place, decided.to);
  steps_.resize(done_);
  steps_.push_back(std::move(step));
  ++done_;
  if (to == EDecision::Deleted) Group();
  return true;
}

bool TDifferenceList::Tick(const std::vector<std::size_t>& places, bool on) {
  return Decide(places, on ? EDecision::Ticked : EDecision::Unticked);
}

bool TDifferenceList::Delete(const std::vector<std::size_t>& places) { return Decide(places, EDecision::Deleted); }

bool TDifferenceList::Undo() {
  if (!CanUndo()) return false;
  for (const TDecided& decided : steps_[--done_]) Set(decided.place, decided.from);
  Group();
  return true;
}

bool TDifferenceList::Redo() {
  if (!CanRedo()) return false;
  for (const TDecided& decided : steps_[done_++]) Set(decided.place, decided.to);
  Group();
  return true;
}

// --- What is shown

void TDifferenceList::SetFilter(const std::string& filter) {
  TDifferenceFilter read(filter);
  if (read == filter_) return;
  filter_ = std::move(read);
  Group();
}

void TDifferenceList::Arrange(EGrouping grouping, ESorting sorting) {
  grouping_ = grouping;
  sorting_ = sorting;
  Sort();
}

// What comes first of its group: the first statement, where these count.
std::vector<std::size_t> TDifferenceList::Ranks() const {
  std::vector<std::size_t> ranks(entries_.size(), 0);
  if (sorting_ == ESorting::ByName) return ranks;
  std::unordered_map<std::string_view, std::size_t> first;
  const auto group_of = [this](const TEntry& entry) -> std::string_view {
    return grouping_ == EGrouping::ByTable ? entry.difference.table : KindTitle(entry.difference.kind);
  };
  for (const TEntry& entry : entries_) {
    std::size_t& rank = first.emplace(group_of(entry), entry.difference.statement).first->second;
    rank = std::min(rank, entry.difference.statement);
  }
  std::ranges::transform(entries_, ranks.begin(), [&](const TEntry& entry) { return first.at(group_of(entry)); });
  return ranks;
}

void TDifferenceList::Sort() {
  const std::vector<std::size_t> ranks = Ranks();
  const bool by_table = grouping_ == EGrouping::ByTable;
  const bool by_name = sorting_ == ESorting::ByName;
  const auto key = [&](std::size_t place) {
    const TEntry& e = entries_[place];
    const bool named = by_name || by_table;
    // What stands beside tables has its own groups, whatever the others go by.
    const bool by_kind = !by_table || !OfTable(e.difference.kind);
    return std::tuple(ranks[place], by_kind ? static_cast<int>(e.difference.kind) : 0,
                      named ? std::string_view(e.table) : std::string_view(),
                      named ? std::string_view(e.difference.table) : std::string_view(),
                      by_name ? std::size_t{0} : e.difference.statement,
                      by_name ? std::string_view(e.item) : std::string_view(), place);
  };
  sorted_.resize(entries_.size());
  std::iota(sorted_.begin(), sorted_.end(), std::size_t{0});
  std::ranges::sort(sorted_, {}, key);
  Group();
}

bool TDifferenceList::Shown(const TEntry& entry) const {
  return entry.decision != EDecision::Deleted && filter_.Shows(entry.difference, entry.words);
}

bool TDifferenceList::SameGroup(std::size_t a, std::size_t b) const {
  const bool by_table = grouping_ == EGrouping::ByTable && OfTable(At(a).kind) && OfTable(At(b).kind);
  return by_table ? At(a).table == At(b).table : At(a).kind == At(b).kind;
}

void TDifferenceList::Group() {
  groups_.clear();
  for (const std::size_t place : sorted_) {
    if (!Shown(entries_[place])) continue;
    if (groups_.empty() || !SameGroup(groups_.back().members.front(), place)) {
      const TDifference& difference = At(place);
      const bool by_table = grouping_ == EGrouping::ByTable;
      groups_.push_back({by_table ? difference.table : std::string(KindTitle(difference.kind)), {}});
    }
    groups_.back().members.push_back(place);
  }
  if (grouping_ == EGrouping::ByTable)
    for (TDifferenceGroup& group : groups_)
      group.alone = group.members.size() == 1 && WholeTable(At(group.members.front()));
}

std::string TDifferenceList::Heading() const {
  std::map<std::string, EDifferenceState> tables;
  std::size_t objects = 0;
  std::size_t unsafe = 0;
  for (const TEntry& entry : entries_) {
    if (entry.decision == EDecision::Deleted) continue;
    if (!entry.difference.unsafe.empty()) ++unsafe;
    if (!OfTable(entry.difference.kind)) {
      ++objects;
      continue;
    }
    EDifferenceState& state = tables.emplace(entry.difference.table, EDifferenceState::Changed).first->second;
    if (WholeTable(entry.difference)) state = entry.difference.state;
  }
  TStringList parts;
  if (!tables.empty()) parts.push_back(Counted(tables.size(), "table") + ": " + StateCounts(tables));
  if (objects > 0) parts.push_back(Counted(objects, "other object"));
  if (unsafe > 0) parts.push_back(Format("%d unsafe", unsafe));
  const auto held_back = std::ranges::count_if(
      entries_, [](const TEntry& entry) { return !entry.ticked_at_first && entry.decision == EDecision::Unticked; });
  if (held_back > 0) parts.push_back(Format("%d left out by the options (Alt+O)", held_back));
  return JoinList(parts, "; ");
}

std::string TDifferenceList::Footing() const {
  const auto count = [this](EDecision decision) { return std::ranges::count(entries_, decision, &TEntry::decision); };
  const auto ticked = count(EDecision::Ticked);
  const auto there = static_cast<std::size_t>(ticked + count(EDecision::Unticked));
  if (there == 0) return {};
  std::string text = Format("%d of %s ticked", ticked, Counted(there, "action"));
  std::size_t shown = 0;
  std::ptrdiff_t shown_ticked = 0;
  for (const TDifferenceGroup& group : groups_) {
    shown += group.members.size();
    shown_ticked += std::ranges::count_if(group.members, [this](std::size_t place) { return Ticked(place); });
  }
  if (shown == there) return text;
  return text + Format("; %d hidden (%d ticked)", there - shown, ticked - shown_ticked);
}

}  // namespace velmora
