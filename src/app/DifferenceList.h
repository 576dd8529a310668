// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The differences of the last comparison as the user works on them: which are done and which are left, how they are
// found and arranged. The rows of the action table follow, and with them script, questions and run.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "app/Difference.h"
#include "app/DifferenceFilter.h"
#include "sync/Data.h"
#include "util/Lists.h"

namespace velmora {

enum class EGrouping { ByTable, ByKind };
enum class ESorting { ByName, ByRunning };

struct TDifferenceGroup {
  std::string title;                 // the table's name, or the kind of its differences
  std::vector<std::size_t> members;  // their places, in order; never empty
  bool alone = false;                // its only member is the whole table, and has no line of its own
};

// What a difference is to the script.
enum class EDecision : char { Ticked, Unticked, Deleted };

class TDifferenceList {
 public:
  explicit TDifferenceList(TdmData& data) : data_(data) {}  // which outlives this object

  // --- The differences, at places from 0 in the order of their ids
  // Takes what a comparison has found, whose rows are all there. What was unticked of the same pair and is found again
  // stays unticked, and what was ticked that would not be; nothing can be undone any more. `ticks` tells whether one
  // that was not there before is ticked; all are where it is empty.
  void Take(std::vector<TDifference> found, const std::function<bool(const TDifference&)>& ticks = {});
  void Clear();   // before the pair is compared again
  void Forget();  // the pair is another one
  std::size_t Count() const { return entries_.size(); }
  const TDifference& At(std::size_t place) const { return entries_[place].difference; }
  const TActionRow& Row(std::size_t place) const { return entries_[place].row; }  // there or not
  EDecision Decision(std::size_t place) const { return entries_[place].decision; }
  bool Ticked(std::size_t place) const { return Decision(place) == EDecision::Ticked; }
  std::optional<std::size_t> PlaceOf(int id) const;

  // --- Decisions. Each call is one step that can be undone; false when it changes nothing. Deleted ones stay deleted.
  bool Tick(const std::vector<std::size_t>& places, bool on);
  bool Delete(const std::vector<std::size_t>& places);
  bool CanUndo() const { return done_ > 0; }
  bool CanRedo() const { return done_ < steps_.size(); }
  bool Undo();
  bool Redo();

  // --- What is shown
  void SetFilter(const std::string& filter);  // see TDifferenceFilter
  void Arrange(EGrouping grouping, ESorting sorting);
  EGrouping Grouping() const { return grouping_; }
  const std::vector<TDifferenceGroup>& Groups() const { return groups_; }
  // Both of all that is not deleted, empty where there is none: "12 tables: 3 new, 1 obsolete, 8 changed; 4 unsafe"
  // with how many were not ticked at first and still are not, and "19 of 20 actions ticked" with how many the filter
  // hides, and how many of these are ticked.
  std::string Heading() const;
  std::string Footing() const;

 private:
  struct TEntry {
    TDifference difference;
    TActionRow row;
    std::string table;  // lower case
    std::string item;
    std::string words;  // that a filter looks in, lower case
    EDecision decision = EDecision::Ticked;
    bool ticked_at_first = true;
    bool unticked_before = false;  // by the user, when it was found last
  };
  struct TDecided {
    std::size_t place = 0;
    EDecision from = EDecision::Ticked;
    EDecision to = EDecision::Ticked;
  };
  using TStep = std::vector<TDecided>;

  static std::string Mark(const TEntry& entry);
  bool TicksAgain(const TEntry& entry) const;
  bool Decide(const std::vector<std::size_t>& places, EDecision to);
  void Set(std::size_t place, EDecision decision);
  bool SameGroup(std::size_t a, std::size_t b) const;
  std::vector<std::size_t> Ranks() const;
  void Sort();
  void Group();
  bool Shown(const TEntry& entry) const;

  TdmData& data_;
  std::vector<TEntry> entries_;
  std::unordered_set<std::string> ticked_;    // marks of what was ticked by the user alone
  std::unordered_set<std::string> unticked_;  // marks of what is to be unticked if it is found again
  std::vector<TStep> steps_;
  std::size_t done_ = 0;  // of the steps; the others can be done again
  TDifferenceFilter filter_;
  EGrouping grouping_ = EGrouping::ByTable;
  ESorting sorting_ = ESorting::ByName;
  std::vector<std::size_t> sorted_;  // all places
  std::vector<TDifferenceGroup> groups_;
};

}  // namespace velmora
