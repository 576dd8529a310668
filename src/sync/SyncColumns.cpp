// SPDX-License-Identifier: GPL-3.0-or-later

// The comparison of columns. They are compared as rendered text, and by what stands in front of them.

#include <algorithm>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "core/Meta.h"
#include "sync/Sync.h"
#include "sync/SyncActions.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

const std::string kNoPredecessor = "first";
constexpr std::ptrdiff_t kFirstPlace = 0;

// Column names in their order; lookups ignore case and give the first. Few are walked, many have an index.
class TColumnNames {
 public:
  explicit TColumnNames(TStringList names) : names_(std::move(names)) {
    if (names_.size() < kIndexedFrom) return;
    for (std::size_t i = 0; i < names_.size(); ++i) places_.emplace(LowerText(names_[i]), i);
  }
  const TStringList& Names() const { return names_; }
  std::ptrdiff_t PlaceOf(const std::string& name) const {
    if (places_.empty()) return IndexOf(names_, name);
    const auto found = places_.find(LowerText(name));
    return found == places_.end() ? kNotInList : static_cast<std::ptrdiff_t>(found->second);
  }

 private:
  static constexpr std::size_t kIndexedFrom = 32;

  TStringList names_;
  std::unordered_map<std::string, std::size_t> places_;
};

TColumnNames ColumnsOf(TMeta& meta, const std::string& table) {
  TStringList names;
  meta.ColumnNames(table, names, false);
  return TColumnNames(std::move(names));
}

}  // namespace

struct TDBSync::TColumnLists {
  TColumnNames reference;
  TColumnNames target;                      // as it was before this comparison
  std::unordered_set<std::string> handled;  // added or dropped by this comparison, in lower case
  std::ptrdiff_t lastPlace;                 // where the last search in the target's list ended

  void Handle(const std::string& name) { handled.insert(LowerText(name)); }
  bool IsHandled(const std::string& name) const { return !handled.empty() && handled.contains(LowerText(name)); }

  // The nearest column in front of `name` that was not handled. `place` gets its position, -1 when there is none.
  const std::string& Predecessor(const TColumnNames& columns, const std::string& name, std::ptrdiff_t& place) const {
    for (place = std::max(columns.PlaceOf(name), kFirstPlace) - 1; place >= 0; --place) {
      const std::string& candidate = ItemAt(columns.Names(), place);
      if (!IsHandled(candidate)) return candidate;
    }
    return kNoPredecessor;
  }
};

void TDBSync::CompareColumns(const std::string& table) {
  GotoFetched(table);
  TColumnLists lists{ColumnsOf(Reference(), table), ColumnsOf(Target(), table), {}, tableIndex_};
  CompareTableType(table);
  auto& columns = Reference().tColumns;
  for (auto row = columns.Rows().begin(); row != columns.Rows().end(); ++row) {
    columns.GoTo(row);
    CompareColumn(table, row->name, lists);
  }
  DropObsoleteColumns(table, lists);
}

void TDBSync::CompareTableType(const std::string& table) {
  Reference().GotoTable(table);
  Target().GotoTable(table);
  const std::string type = Reference().tTables.Current().type;
  if (Target().tTables.Current().type == type) return;
  AddToActions(saChangeTableType, table, type, table);
  TgtConn->ParseDDL(Format("alter table %s type=%s", table, type));
}

void TDBSync::CompareColumn(const std::string& table, const std::string& name, TColumnLists& lists) {
  const bool isNew = !Target().FindColumn(table, name);
  std::string refText, tgtText;
  // The target's engine renders both, so that the columns of two engines meet in one dialect; rows that say the same
  // it would only write twice.
  if (!isNew && Reference().StandsOn(table) && Target().StandsOn(table) &&
      Reference().tColumns.Current().SaysSame(Target().tColumns.Current())) {
    TgtConn->ColumnDescription(ColumnRecord(Reference().tTables.Current(), Reference().tColumns.Current()), true,
                               refText);
    tgtText = refText;
  } else {
    Reference().ColumnDefinition(table, name, refText, TgtConn);
    if (isNew) {
      AddColumn(table, name, refText, lists);
      return;
    }
    Target().ColumnDefinition(table, name, tgtText);
  }

  std::ptrdiff_t refPlace = 0;
  const std::string& refPrev = lists.Predecessor(lists.reference, name, refPlace);
  const std::string& tgtPrev = lists.Predecessor(lists.target, name, lists.lastPlace);
  if (tgtText != refText || refPrev != tgtPrev) ModifyColumn(table, name, refText, refPrev);
}

void TDBSync::AddColumn(const std::string& table, const std::string& name, const std::string& text,
                        TColumnLists& lists) {
  AddToActions(saAddColumn, table, text, name);
  lists.Handle(name);
  TgtConn->ParseDDL(Format("alter table %s add column %s;", table, name + " " + text));
}

// Deliberate: the new place stands in the description alone, so a mere change of order is found again next time.
void TDBSync::ModifyColumn(const std::string& table, const std::string& name, const std::string& text,
                           const std::string& predecessor) {
  AddToActions(saModifyColumn, table, text + " after " + predecessor, name);
  TgtConn->ParseDDL(Format("alter table %s modify column %s;", table, name + " " + text));
}

// Deliberate, twice. The test for "handled" looks at the column where the last search in the target's list ended, and
// not at the column under way; without any search it is the one at the table's own position. A position outside the
// list ends the run. And the row after a dropped one is passed over: the deletion steps on it, the loop steps past it.
void TDBSync::DropObsoleteColumns(const std::string& table, TColumnLists& lists) {
  Target().GotoTable(table);
  auto& columns = Target().tColumns;
  for (columns.First(); !columns.Eof(); columns.Next()) {
    if (Reference().FindColumn(table, columns.Current().name)) continue;
    if (lists.IsHandled(ItemAt(lists.target.Names(), lists.lastPlace))) continue;

    const std::string name = columns.Current().name;
    std::string description, unused;
    Target().ColumnDefinition(table, name, description);
    AddToActions(saDropColumn, table, description, name);
    lists.Handle(name);
    Target().DropColumnSQL(table, name, unused);
  }
}

}  // namespace velmora
