// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <iterator>

#include "exact/objects/Dependents.h"
#include "exact/plan/PlanApply.h"
#include "exact/plan/RenamePlan.h"
#include "exact/run/ExactSync.h"
#include "exact/run/ScriptComment.h"
#include "sync/ScriptGenerator.h"
#include "util/Counted.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kPurpose[] = "Leads back to the structure that %s had before the run";
constexpr char kWholeRun[] =
    "It begins where the run ends: after one that stopped on its way, compare with a dump of what was before";
constexpr char kAllBack[] = "Nothing that holds data is taken away by the run";
constexpr char kNotBack[] = "What the run takes away and this cannot bring back:";
constexpr char kFault[] = "Not known in full: %s";
constexpr char kLeft[] = "By a proof in memory this leaves %s of tables and %s beside them";

const TDefinerWishes kEveryDefiner = {EDefiners::Compare, {}};

// Objects that one side may hide are seen well enough: both are one server's. What it wrote itself comes back, too.
TDatabaseObjects AllSeen(TDatabaseObjects objects) {
  objects.not_all_seen.clear();
  for (TOtherObject& object : objects.objects) object.servers_start = false;
  return objects;
}

}  // namespace

// The names of before, the last first.
std::vector<TRename> TExactSync::RenamesBack() const {
  std::vector<TRename> renames;
  for (std::size_t i = renames_.size(); i-- > 0;) {
    if (data_.mtActions.Find(renames_[i].id) == nullptr) continue;
    TRename& rename = renames.emplace_back(renames_[i].rename);
    std::swap(rename.from, rename.to);
  }
  return renames;
}

void TExactSync::RenameBack(TSchema schema, std::vector<TPlanStatement>& plan) const {
  for (const TRename& rename : RenamesBack()) {
    std::ranges::move(StatementsOf({0, rename}, schema), std::back_inserter(plan));
    ApplyRename(rename, target_server_, schema);
  }
}

// Of the way back, which has its renames before its objects.
std::vector<TPlanStatement> TExactSync::PlanBack(const TSchema& after, const TDatabaseObjects& objects_after) const {
  const TTableNames touched = TouchedTables();
  TEquivalenceUse use = Equivalences;
  const TSchema wanted = renames_.empty() ? read_.target.schema : RenamedTarget(nullptr);
  const std::vector<TChange> changes = SchemaChanges(wanted, after, use, &touched);
  TDatabaseObjects there = objects_after;
  for (const TRename& rename : RenamesBack()) FollowRename(rename, there);
  const std::vector<TObjectChange> objects =
      CompareObjects(AllSeen(read_.target_objects), AllSeen(std::move(there)), kEveryDefiner, &use).changes;
  TObjectPlan beside = MakeObjectPlan(objects, server_, DroppedTables(changes));
  std::vector<TPlanStatement> back = std::move(beside.before);
  TPlanServer server = server_;
  server.unchecked_foreign_keys = false;  // nobody has asked about orphans on this way
  std::ranges::move(MakePlan(changes, wanted, after, server), std::back_inserter(back));
  RenameBack(wanted, back);
  std::ranges::move(beside.after, std::back_inserter(back));
  return back;
}

// What the way back would leave, in a line; empty for nothing.
std::string TExactSync::LeftByWayBack(const std::vector<TPlanStatement>& back, TSchema tables, TDatabaseObjects objects,
                                      TStringList& faults) const {
  FollowTables(back, tables, faults);
  FollowObjects(back, objects, faults);
  TEquivalenceUse use = Equivalences;
  const TTableNames touched = TouchedTables();
  const std::size_t of_tables = SchemaChanges(read_.target.schema, tables, use, &touched).size();
  const std::size_t beside =
      CompareObjects(AllSeen(read_.target_objects), AllSeen(std::move(objects)), kEveryDefiner, &use).changes.size();
  if (of_tables + beside == 0) return {};
  return Format(kLeft, Counted(of_tables, "difference"), Counted(beside, "difference"));
}

// The comparison with its sides swapped: the target as it is stands for what is wanted.
void TExactSync::GenerateUndo(TScriptEditor& editor, const TClock& clock) const {
  const std::vector<TPlanStatement> forth = Plan();
  TStringList faults;
  const TSchema after = TablesAfter(forth, faults);
  const TDatabaseObjects objects_after = ObjectsAfter(forth, faults);
  const std::vector<TPlanStatement> back = PlanBack(after, objects_after);
  const std::string left = LeftByWayBack(back, after, objects_after, faults);

  editor.Clear();
  editor.AddLine(ScriptComment(ScriptOrigin(clock)));
  std::string target;
  connections_.target->GetDisplayName(target);
  editor.AddLine(ScriptComment(Format(kPurpose, target)));
  editor.AddLine(ScriptComment(kWholeRun));
  TStringList lost;  // objects come back: their texts are here
  for (const TPlanStatement& statement : forth)
    for (const std::string& reason : statement.object.empty() ? statement.unsafe : TStringList())
      lost.push_back(Format("  table %s: %s", statement.table, reason));
  editor.AddLine(ScriptComment(lost.empty() ? kAllBack : kNotBack));
  for (const std::string& line : lost) editor.AddLine(ScriptComment(line));
  for (const std::string& fault : faults) editor.AddLine(ScriptComment(Format(kFault, fault)));
  if (!left.empty()) editor.AddLine(ScriptComment(left));
  WriteStatements(back, editor);
}

}  // namespace velmora
