#include <algorithm>
#include <iterator>

#include "exact/plan/PlanApply.h"
#include "exact/plan/RenamePlan.h"
#include "exact/run/ExactSync.h"
#include "sync/ScriptGenerator.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kPurpose[] = "-- Leads back to the structure that %s had before the run";
constexpr char kWholeRun[] =
    "-- It begins where the run ends: after one that stopped on its way, compare with a dump of what was before";
constexpr char kAllBack[] = "-- Nothing that holds data is taken away by the run";
constexpr char kNotBack[] = "-- What the run takes away and this cannot bring back:";
constexpr char kFault[] = "-- Not known in full: %s";
constexpr char kLeft[] = "-- By a proof in memory this leaves %d differences";

std::string OneComment(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  return text;
}

// Objects that one side may hide are seen well enough: both are one server's.
TDatabaseObjects AllSeen(TDatabaseObjects objects) {
  objects.not_all_seen.clear();
  return objects;
}

int TablesLeft(const std::vector<TPlanStatement>& plan, const TSchema& wanted, TSchema schema,
               const TTableNames& touched, const TServerTraits& server, TEquivalenceUse use) {
  for (const TPlanStatement& statement : plan)
    if (statement.object.empty()) ApplyStatement(statement.text, schema, server);
  return static_cast<int>(SchemaChanges(wanted, schema, use, &touched).size());
}

}  // namespace

// The names of before, the last first.
void TExactSync::RenameBack(TSchema schema, std::vector<TPlanStatement>& plan) const {
  for (std::size_t i = renames_.size(); i-- > 0;) {
    TRenameChange change = renames_[i];
    if (data_.mtActions.Find(change.id) == nullptr) continue;
    std::swap(change.rename.from, change.rename.to);
    plan.push_back(StatementOf(change, schema));
    ApplyRename(change.rename, target_server_, schema);
  }
}

// The comparison with its sides swapped: the target as it is stands for what is wanted.
void TExactSync::GenerateUndo(TScriptEditor& editor, const TClock& clock) const {
  const std::vector<TPlanStatement> forth = Plan();
  const TTableNames touched = TouchedTables();
  TStringList faults;
  const TSchema after = TablesAfter(forth, faults);
  const TDatabaseObjects objects_after = AllSeen(ObjectsAfter(forth, faults));
  TEquivalenceUse use = Equivalences;
  const TSchema wanted = renames_.empty() ? read_.target.schema : RenamedTarget(nullptr);
  const std::vector<TChange> changes = SchemaChanges(wanted, after, use, &touched);
  const std::vector<TObjectChange> objects =
      CompareObjects(AllSeen(read_.target_objects), objects_after, {EDefiners::Compare, {}}).changes;
  TObjectPlan beside = MakeObjectPlan(objects, server_, DroppedTables(changes));
  std::vector<TPlanStatement> back = std::move(beside.before);
  TPlanServer server = server_;
  server.unchecked_foreign_keys = false;  // nobody has asked about orphans on this way
  std::ranges::move(MakePlan(changes, wanted, after, server), std::back_inserter(back));
  RenameBack(wanted, back);

  editor.Clear();
  editor.AddLine("-- " + ScriptOrigin(clock));
  std::string target;
  connections_.target->GetDisplayName(target);
  editor.AddLine(OneComment(Format(kPurpose, target)));
  editor.AddLine(kWholeRun);
  TStringList lost;  // objects come back: their texts are here
  for (const TPlanStatement& statement : forth)
    for (const std::string& reason : statement.object.empty() ? statement.unsafe : TStringList())
      lost.push_back(OneComment(Format("--   table %s: %s", statement.table, reason)));
  editor.AddLine(lost.empty() ? kAllBack : kNotBack);
  for (const std::string& line : lost) editor.AddLine(line);
  for (const std::string& fault : faults) editor.AddLine(OneComment(Format(kFault, fault)));
  if (const int left = TablesLeft(back, read_.target.schema, after, touched, target_server_, Equivalences); left > 0)
    editor.AddLine(Format(kLeft, left));
  std::ranges::move(beside.after, std::back_inserter(back));
  WriteStatements(back, editor);
}

}  // namespace velmora
