// SPDX-License-Identifier: GPL-3.0-or-later

// What the exact dialect's comparison found, told one by one.

#include <unordered_map>

#include "app/ExactDialect.h"
#include "app/PlannedStatements.h"
#include "app/ScriptSplitter.h"
#include "exact/compare/ChangeText.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kSource[] = "In the source: %s";

EDifferenceKind KindOf(const TChange& change) {
  if (SyncAction(change.action).WholeTable()) return EDifferenceKind::Table;
  if (change.action == saChangeTableType)
    return change.item == kPartitioningItem ? EDifferenceKind::Partitioning : EDifferenceKind::Options;
  if (IsKey(change.kind)) return EDifferenceKind::Index;
  if (change.kind == EElement::Column) return EDifferenceKind::Column;
  return change.kind == EElement::ForeignKey ? EDifferenceKind::ForeignKey : EDifferenceKind::Constraint;
}

EDifferenceState StateOf(const TChange& change) {
  if (change.action == saDropTable) return EDifferenceState::Obsolete;
  if (change.action == saCreateTable) return EDifferenceState::New;
  switch (SyncAction(change.action).icon) {
    case kIconNew:
      return EDifferenceState::New;
    case kIconObsolete:
      return EDifferenceState::Obsolete;
    default:
      return EDifferenceState::Changed;
  }
}

EDifferenceKind KindOf(const TObjectChange& change) {
  for (auto kind = EDifferenceKind::View; kind != EDifferenceKind::Event;
       kind = static_cast<EDifferenceKind>(static_cast<int>(kind) + 1))
    if (KindWord(kind) == change.kind) return kind;
  return EDifferenceKind::Event;
}

EDifferenceState StateOf(TSyncAction action) {
  return action == saCreateObject ? EDifferenceState::New
         : action == saDropObject ? EDifferenceState::Obsolete
                                  : EDifferenceState::Changed;
}

// The first statement of each action, by id.
std::unordered_map<int, std::size_t> FirstStatements(const std::vector<TPlanStatement>& plan) {
  std::unordered_map<int, std::size_t> first;
  for (std::size_t i = 0; i < plan.size(); ++i)
    for (const int action : plan[i].actions) first.emplace(action, i);
  return first;
}

// What is told of a source's columns and tables, by the target's names.
class TMappingNotes {
 public:
  explicit TMappingNotes(const std::vector<TMadeColumn>& columns) {
    for (const TMadeColumn& column : columns) {
      const std::string told = column.text.empty() ? std::string() : "\n" + column.text;
      if (!column.column.empty()) notes_[LowerText(column.Place())] = Format(kSource, column.source) + told;
      if (column.level == EMadeLevel::Info) continue;
      std::string& of_table = notes_[LowerText(column.table)];
      const std::string line = column.column.empty() ? column.text : column.column + ": " + column.text;
      (column.column.empty() ? of_table : of_columns_[LowerText(column.table)]) += line + "\n";
    }
  }

  std::string Of(const TChange& change) const {
    const std::string table = LowerText(change.table);
    if (change.kind == EElement::Column && !SyncAction(change.action).WholeTable())
      return At(notes_, table + "." + LowerText(change.item));
    return Trim(At(notes_, table) + (change.action == saCreateTable ? At(of_columns_, table) : std::string()));
  }

 private:
  using TNotes = std::unordered_map<std::string, std::string>;
  static std::string At(const TNotes& notes, const std::string& name) {
    const auto found = notes.find(name);
    return found == notes.end() ? std::string() : found->second;
  }

  TNotes notes_;
  TNotes of_columns_;  // what is told of the columns, by their table
};

}  // namespace

std::vector<TDifference> TExactDialect::Differences() const {
  const auto first = FirstStatements(sync.WholePlan());
  const TMappingNotes notes(sync.MadeColumns());
  std::vector<TDifference> differences;
  differences.reserve(sync.AllChanges().size() + sync.AllObjectChanges().size());
  const std::map<int, TActionLock> locks = sync.ActionLocks(sync.WholePlan());
  const auto lock_of = [&locks](int id) {
    const auto lock = locks.find(id);
    return lock == locks.end() ? std::string() : lock->second.text;
  };
  const auto first_of = [&first](int id) {
    const auto statement = first.find(id);
    return statement == first.end() ? 0 : statement->second;
  };
  std::unordered_map<int, const TRenameOffer*> offers;
  for (const TRenameOffer& offer : sync.RenameOffers()) offers[offer.goes] = offers[offer.comes] = &offer;
  for (const TRenameChange& change : sync.Renames()) {
    differences.push_back({change.id,
                           change.Table(),
                           change.rename.OfTable() ? "" : change.rename.to,
                           change.rename.OfTable() ? EDifferenceKind::Table : EDifferenceKind::Column,
                           EDifferenceState::Changed,
                           change.LogText(),
                           change.rename.from + " -> " + change.rename.to,
                           {},
                           first_of(change.id),
                           {},
                           lock_of(change.id)});
    differences.back().renamed = change.rename.Text();
  }
  for (const TChange& change : sync.AllChanges()) {
    const std::string detail =
        ChangeDetail(change, sync.Target().Find(change.table), sync.Reference().Find(change.table));
    differences.push_back({change.id, change.table, change.item, KindOf(change), StateOf(change), change.LogText(),
                           detail, change.unsafe, first_of(change.id), notes.Of(change), lock_of(change.id)});
    differences.back().other_engine =
        std::ranges::any_of(change.options, [](const TTableOption& option) { return option.name == "ENGINE"; });
    const auto offer = offers.find(change.id);
    if (offer == offers.end()) continue;
    TDifference& offered = differences.back();
    offered.rename = offer->second->rename.Text();
    offered.score = offer->second->score;
    offered.note += (offered.note.empty() ? "" : "\n") + offer->second->Text();
  }
  for (const TObjectChange& change : sync.AllObjectChanges()) {
    differences.push_back({change.id, std::string(KindsTitle(change.kind)), change.name, KindOf(change),
                           StateOf(change.action), change.LogText(), JoinList(change.elements, ", "), change.unsafe,
                           first_of(change.id)});
    const auto& text = change.new_text ? change.new_text : change.old_text;
    if (text) differences.back().trigger_table = text->table;
  }
  return differences;
}

std::vector<TPlannedStatement> TExactDialect::Planned(const std::string& script) const {
  const TPlannedStatements planned(sync.Plan());
  std::vector<TPlannedStatement> statements;
  for (const TScriptStatement& statement : SplitExactScript(script).statements)
    if (const TPlanStatement* found = planned.Find(statement.text))
      statements.push_back({statement.start, statement.start + statement.text.size(), found->actions});
  return statements;
}

}  // namespace velmora
