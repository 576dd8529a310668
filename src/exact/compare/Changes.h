// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What has to be changed in a target to be as the reference: one change per element.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "exact/compare/Equivalences.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/TableText.h"
#include "sync/SyncActions.h"

namespace velmora {

// The items of changes of a table's options.
inline constexpr char kOptionsItem[] = "options";
inline constexpr char kPartitioningItem[] = "partitioning";

struct TChange {
  int id = 0;  // of its action row; 0 until it has one
  TSyncAction action = saCreateTable;
  std::string table;
  EElement kind = EElement::Column;  // of what changes; for options and whole tables it says nothing
  std::string item;       // element's name; empty for whole tables; for options kOptionsItem, kPartitioningItem
  TElementText old_text;  // as the target has it; empty for what is new
  TElementText new_text;  // as the reference has it; empty for what goes
  std::shared_ptr<const TColumnText> old_column{};  // of columns, what these texts say; null for an empty one
  std::shared_ptr<const TColumnText> new_column{};
  std::optional<std::string> after;   // of columns that are placed: the column before it, empty for the first
  bool moved_only = false;            // a column that only changes its place
  std::vector<TTableOption> options;  // to set, for a change of options
  std::string unsafe;                 // why it may lose data; empty for what is safe
  std::string named_by{};             // of a column that goes or changes: "view v, trigger g" of the target

  std::string LogText() const;      // as in "Changed column total", "Moved column total", "Changed options of table t"
  std::string Description() const;  // old and new text, and why it is unsafe
};

// Fills in what the texts of a change of a column say.
void ReadColumns(TChange& change, const TTableText& target, const TTableText& reference);

// Changes within one table that both sides have, in the order: options, columns (dropped, modified, moved, added),
// keys, checks, foreign keys, partitioning. Columns are moved as few as can be.
std::vector<TChange> CompareTableTexts(const TTableText& reference, const TTableText& target, TEquivalenceUse& use);

// Places of a longest strictly increasing subsequence of `order`.
std::vector<std::size_t> LongestIncreasing(const std::vector<std::size_t>& order);

}  // namespace velmora
