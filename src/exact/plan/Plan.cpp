// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/Plan.h"

#include <algorithm>
#include <array>
#include <deque>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "exact/plan/PlanClauses.h"
#include "exact/plan/PlanPartitions.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/Lexer.h"
#include "util/Text.h"

namespace velmora {

namespace {

class TPlanner {
 public:
  TPlanner(const std::vector<TChange>& changes, const TSchema& reference, const TSchema& target,
           const TPlanServer& server);
  std::vector<TPlanStatement> Make();

 private:
  TTableWork& Work(const std::string& table);
  void FindObstacles();
  void FindObstacles(const TTableText& table);
  bool MovesAway(const TChange& change) const;
  void AddCauses(const std::string& table, const std::vector<std::string>& columns, TObstacle& obstacle) const;
  void AddCheckCauses(const TTableText& table, const std::string& name, TObstacle& obstacle) const;

  void DropForeignKeys(const TTableWork& work);
  void DropTable(const TTableWork& work);
  void DropMovedChecks(const TTableWork& work);
  void RemovePartitioning(const TTableWork& work);
  void AlterTable(const TTableWork& work);
  void CreateTable(const TTableWork& work);
  bool IsChecked(const TElementText& key, const TTableWork& work) const;
  void AddForeignKeys(const TTableWork& work);
  void RenewHashKeys(const TTableWork& work);

  const TSchema& reference_;
  const TSchema& target_;
  TPlanServer server_;
  std::deque<TTableWork> work_;  // in the order of the changes
  std::unordered_map<std::string, TTableWork*> by_name_;
  std::unordered_multimap<std::string, std::string> new_checks_;  // tables by lower-case name of the check
  // By lower-case table: the changed columns, in lower case, or the empty name for all of them.
  std::unordered_map<std::string, std::unordered_multimap<std::string, const TChange*>> disturbed_;
  std::vector<TPlanStatement> plan_;
};

TPlanner::TPlanner(const std::vector<TChange>& changes, const TSchema& reference, const TSchema& target,
                   const TPlanServer& server)
    : reference_(reference), target_(target), server_(server) {
  for (const TChange& change : changes) {
    TTableWork& work = Work(change.table);
    work.changes.push_back(&change);
    if (change.action == saAddConstraint && change.kind == EElement::Check)
      new_checks_.emplace(LowerText(change.item), change.table);
    // No foreign key outlives its table's engine.
    const bool all = SetsOption(change, "ENGINE");
    if (all || DisturbsForeignKeys(change, work))
      disturbed_[LowerText(change.table)].emplace(all ? std::string() : LowerText(change.item), &change);
  }
  FindObstacles();
}

TTableWork& TPlanner::Work(const std::string& table) {
  TTableWork*& work = by_name_[table];
  if (work == nullptr) {
    work = &work_.emplace_back();
    work->name = table;
    work->reference = reference_.Find(table);
    work->target = target_.Find(table);
    work->server = server_;
  }
  return *work;
}

bool Drops(const std::vector<const TChange*>& changes) {
  return std::any_of(changes.begin(), changes.end(), [](const TChange* c) { return c->action == saDropTable; });
}

void TPlanner::FindObstacles() {
  for (const TTableText& table : target_.Tables()) {
    if (disturbed_.empty() && !by_name_.contains(table.name)) continue;
    const auto work = by_name_.find(table.name);
    if (work == by_name_.end() || !Drops(work->second->changes)) FindObstacles(table);
  }
}

void TPlanner::FindObstacles(const TTableText& table) {
  for (const TElement& key : table.elements) {
    if (key.kind != EElement::ForeignKey || key.name.empty()) continue;
    const TForeignKeyParts& parts = key.text.ForeignKey();
    TObstacle obstacle{&key, {}};
    AddCauses(table.name, parts.columns, obstacle);
    if (!server_.mysql) AddCheckCauses(table, key.name, obstacle);
    if (parts.database.empty()) AddCauses(parts.table, parts.references, obstacle);
    if (obstacle.causes.empty()) continue;
    TTableWork& work = Work(table.name);
    const bool changes = std::any_of(work.changes.begin(), work.changes.end(), [&key](const TChange* change) {
      return IsForeignKeyChange(*change) && SameText(change->item, key.name);
    });
    if (!changes) work.obstacles.push_back(std::move(obstacle));
  }
}

void TPlanner::AddCauses(const std::string& table, const std::vector<std::string>& columns, TObstacle& obstacle) const {
  const auto disturbed = disturbed_.find(LowerText(table));
  if (disturbed == disturbed_.end()) return;
  const auto add = [&](const std::string& column) {
    const auto [begin, end] = disturbed->second.equal_range(column);
    std::transform(begin, end, std::back_inserter(obstacle.causes), [](const auto& entry) { return entry.second; });
  };
  add({});
  for (const auto& column : columns) add(LowerText(column));
}

// "drop constraint" says too little to servers where a check and a foreign key have one name.
void TPlanner::AddCheckCauses(const TTableText& table, const std::string& name, TObstacle& obstacle) const {
  const TElement* check = table.Find(EElement::Check, name);
  const auto work = by_name_.find(table.name);
  if (check == nullptr || work == by_name_.end()) return;
  for (const TChange* change : work->second->changes) {
    const bool own =
        change->kind == EElement::Check && change->action != saAddConstraint && SameText(change->item, name);
    if (own || DisturbsCheck(*change, *check, *work->second)) obstacle.causes.push_back(change);
  }
}

std::vector<TPlanStatement> TPlanner::Make() {
  using TStep = void (TPlanner::*)(const TTableWork&);
  constexpr std::array<TStep, 8> kSteps{
      &TPlanner::DropForeignKeys, &TPlanner::DropTable,   &TPlanner::DropMovedChecks, &TPlanner::RemovePartitioning,
      &TPlanner::AlterTable,      &TPlanner::CreateTable, &TPlanner::AddForeignKeys,  &TPlanner::RenewHashKeys};
  for (const TStep step : kSteps)
    for (const TTableWork& work : work_) (this->*step)(work);
  return std::move(plan_);
}

// A key that keeps its name goes here and comes back in the last step: servers refuse both in one statement.
void TPlanner::DropForeignKeys(const TTableWork& work) {
  TAlter alter(work.name);
  for (const TChange* change : work.changes) {
    if (!IsForeignKeyChange(*change) || change->action == saAddConstraint) continue;
    alter.Clause(DropText(EElement::ForeignKey, change->item, server_));
    alter.Makes(*change);
  }
  for (const TObstacle& obstacle : work.obstacles) {
    alter.Clause(DropText(EElement::ForeignKey, obstacle.key->name, server_));
    for (const TChange* cause : obstacle.causes) alter.Serves(*cause);
  }
  alter.MoveTo(plan_);
}

TPlanStatement WholeTable(const TChange& change, std::string text) {
  TPlanStatement statement{std::move(text), {change.id}, {}, change.table};
  if (!change.unsafe.empty()) statement.unsafe.push_back(Subject(change) + ": " + change.unsafe);
  return statement;
}

void TPlanner::DropTable(const TTableWork& work) {
  for (const TChange* change : work.changes) {
    if (change->action != saDropTable) continue;
    plan_.push_back(WholeTable(*change, "drop table " + QuotedName(work.name)));
  }
}

// Whether a check goes whose name another table gets: to some servers the names of checks are those of a database.
bool TPlanner::MovesAway(const TChange& change) const {
  if (change.action != saDropConstraint || change.kind != EElement::Check) return false;
  const auto [begin, end] = new_checks_.equal_range(LowerText(change.item));
  return std::any_of(begin, end, [&change](const auto& entry) { return entry.second != change.table; });
}

void TPlanner::DropMovedChecks(const TTableWork& work) {
  TAlter alter(work.name);
  for (const TChange* change : work.changes) {
    if (!MovesAway(*change)) continue;
    alter.Clause(DropText(change->kind, change->item, server_));
    alter.Makes(*change);
  }
  alter.MoveTo(plan_);
}

// Before the other changes: these may drop the columns by which the table is partitioned, or take them out of its keys.
void TPlanner::RemovePartitioning(const TTableWork& work) {
  if (!RemovesPartitioning(work)) return;
  TAlter alter(work.name);
  alter.Clause("remove partitioning");
  const TChange* own = PartitionChange(work);
  if (own != nullptr && own->new_text.Empty()) {
    alter.Makes(*own);
  } else {
    for (const TChange* change : PartitionsDisturbed(work)) alter.Serves(*change);
    if (own != nullptr) alter.Serves(*own);
  }
  alter.MoveTo(plan_);
}

void TPlanner::AlterTable(const TTableWork& work) {
  if (work.target == nullptr) return;
  TTableAlters alters(work.name);
  SetOptions(work, alters);
  AddColumnClauses(work, alters);
  RenewElements(work, alters);
  for (const TChange* change : work.changes) {
    if (IsColumnChange(*change) || IsForeignKeyChange(*change)) continue;
    if (change->action == saChangeTableType || change->action == saDropTable) continue;
    if (!MovesAway(*change)) ChangeElement(*change, work, alters);
  }
  SetPartitioning(work, alters);
  alters.MoveTo(plan_);
}

void TPlanner::CreateTable(const TTableWork& work) {
  for (const TChange* change : work.changes) {
    if (change->action != saCreateTable || work.reference == nullptr) continue;
    plan_.push_back(WholeTable(*change, CreationTextOf(*work.reference, true)));
  }
}

// Whether rows may be there that break the key, and the server can look at them: there is a table to which it refers.
bool TPlanner::IsChecked(const TElementText& key, const TTableWork& work) const {
  if (server_.unchecked_foreign_keys || work.target == nullptr) return false;
  const TForeignKeyParts& parts = key.ForeignKey();
  if (!parts.database.empty() || SameText(parts.table, work.name)) return true;
  const auto parent = by_name_.find(parts.table);
  const bool goes = parent != by_name_.end() && Drops(parent->second->changes);
  return !goes && (reference_.Find(parts.table) != nullptr || target_.Find(parts.table) != nullptr);
}

void TPlanner::AddForeignKeys(const TTableWork& work) {
  TAlter checked(work.name), unchecked(work.name);
  const auto alter_for = [&](const TElementText& key) -> TAlter& {
    TAlter& alter = IsChecked(key, work) ? checked : unchecked;
    alter.Clause("add " + key.Str());
    return alter;
  };
  for (const TChange* change : work.changes) {
    if (change->action == saCreateTable && work.reference != nullptr) {
      for (const auto& element : work.reference->elements)
        if (element.kind == EElement::ForeignKey) alter_for(element.text).Serves(*change);
    }
    if (!IsForeignKeyChange(*change) || change->action == saDropConstraint) continue;
    alter_for(change->new_text).Serves(*change);
  }
  for (const TObstacle& obstacle : work.obstacles) {
    TAlter& alter = alter_for(obstacle.key->text);
    for (const TChange* cause : obstacle.causes) alter.Serves(*cause);
  }
  unchecked.MoveTo(plan_);
  checked.CheckRows();
  checked.MoveTo(plan_);
}

// With every "alter table" that does not add it a server forgets that a unique key was one by hash, where it can make
// another one of it: if the table's last statement leaves one out, all of them come again after it.
void TPlanner::RenewHashKeys(const TTableWork& work) {
  if (work.reference == nullptr) return;
  const std::vector<TElement> keys = HashKeys(work);
  if (keys.empty()) return;
  const std::string head = "alter table " + QuotedName(work.name);
  const TPlanStatement* last = nullptr;
  for (const TPlanStatement& statement : plan_) {
    const bool alters = statement.text.starts_with(head + " ") || statement.text.starts_with(head + "\n");
    if (alters) last = &statement;
  }
  if (last == nullptr) return;
  const auto kept = [last](const TElement& key) {
    return last->text.find("add " + key.text.Str()) != std::string::npos;
  };
  if (std::all_of(keys.begin(), keys.end(), kept)) return;
  TAlter alter(work.name);
  for (const TElement& key : keys) {
    alter.Clause(DropText(key.kind, key.name, server_));
    alter.Clause("add " + key.text.Str());
    for (const TChange* change : work.changes) alter.Serves(*change);
    for (const TObstacle& obstacle : work.obstacles)
      for (const TChange* cause : obstacle.causes) alter.Serves(*cause);
  }
  alter.MoveTo(plan_);
}

}  // namespace

std::vector<TPlanStatement> MakePlan(const std::vector<TChange>& changes, const TSchema& reference,
                                     const TSchema& target, const TPlanServer& server) {
  return TPlanner(changes, reference, target, server).Make();
}

}  // namespace velmora
