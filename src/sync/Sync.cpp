// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/Sync.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "core/CreationTexts.h"
#include "core/Host.h"
#include "core/Meta.h"
#include "sync/SyncActions.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kEmptyReference[] = "TDBSync: Empty reference database!";
constexpr char kEmptyTarget[] = "TDBSync: Empty target database!";
constexpr char kUnhandledAction[] = "AddToActions: Unhandled action type";
constexpr char kOtherTable[] = "The creation text of table %s makes another table, too";

constexpr std::size_t kPassesOverReference = 4;

void ExpectTexts(TDBConn* conn, const TStringList& tables) {
  if (auto* texts = dynamic_cast<TCreationTexts*>(conn)) texts->ExpectCreationTexts(tables);
}

// A text within which another table is made leaves its own one as not fetched: each look at that would fetch it anew,
// and take its rows away from under the walks over them.
void ExpectFetched(TMeta& meta, const std::string& table) {
  meta.GotoTable(table);
  if (!meta.tTables.Current().fetched) RaiseError(Format(kOtherTable, table));
}

}  // namespace

TDBSync::TDBSync(TTaskConnections& connections, TdmData& data, TActionTree& tree, TProgress& progress, TMessageLog& log)
    : connections_(connections), data_(data), tree_(tree), progress_(progress), log_(log) {}

void TDBSync::SetDatabases(TDBConn* ref, TDBConn* tgt) {
  RefConn = ref;
  TgtConn = tgt;
  if (ref == nullptr) RaiseError(kEmptyReference);
  if (tgt == nullptr) RaiseError(kEmptyTarget);
}

TMeta& TDBSync::Reference() const { return RefConn->meta(); }
TMeta& TDBSync::Target() const { return TgtConn->meta(); }

std::unique_ptr<TDBConn> TDBSync::Compare() {
  SetDatabases(RefConn, TgtConn);
  ActionLog.clear();
  tableUnderWay_.clear();
  data_.mtActions.Clear();
  targetLost_ = true;                                    // unless it can be copied
  std::unique_ptr<TDBConn> snapshot = TgtConn->Clone();  // before anything touches the target
  std::unique_ptr<TDBConn> compared;
  RunGuarded(
      [this] {
        tree_.BeginUpdate();
        ReconnectBoth();
        RunPasses();
      },
      [&] {
        ExpectTexts(RefConn, {});
        targetLost_ = !TgtConn->GetConnected();
        TgtConn = nullptr;
        compared = connections_.SwapTarget(std::move(snapshot));
        tree_.EndUpdate();
        progress_.Finish();
      });
  return compared;
}

void TDBSync::ReconnectBoth() {
  progress_.ShowSimple("Connecting...");
  connections_.reference->Reconnect();
  connections_.target->Reconnect();
}

// The order of the passes is the order of the actions, and with it that of the script.
void TDBSync::RunPasses() {
  TStringList referenceTables, targetTables;
  Reference().TableNames(referenceTables);
  Target().TableNames(targetTables);
  const std::size_t steps = targetTables.size() + kPassesOverReference * referenceTables.size();
  progress_.ShowTwoBars("Analyzing structure...", static_cast<std::int64_t>(steps));

  DropObsoleteTables(targetTables);
  ExpectCommonTexts(referenceTables);
  CompareTables(referenceTables, "Analyzing columns", &TDBSync::CompareColumns);
  CompareTables(referenceTables, "Analyzing keys", &TDBSync::CompareKeys);
  CompareTables(referenceTables, "Analyzing constraints", &TDBSync::CompareConstraints);
  CreateNewTables(referenceTables);
  log_.LogLine("Done.");
}

// Tells both engines whose texts the passes will ask for, so that they can read ahead and need not ask twice.
void TDBSync::ExpectCommonTexts(const TStringList& referenceTables) {
  TStringList common;
  for (const std::string& table : referenceTables)
    if (Target().FindTable(table)) common.push_back(table);
  ExpectTexts(RefConn, common);
  ExpectTexts(TgtConn, common);
}

void TDBSync::ForEachTable(const TStringList& tables, const std::string& title, const TTableVisit& visit) {
  progress_.StartDetail(title, static_cast<std::int64_t>(tables.size()));
  tableIndex_ = 0;
  for (const std::string& table : tables) {
    progress_.StepDetail();
    Host().ProcessMessages();
    tableUnderWay_ = table;
    visit(table);
    ++tableIndex_;
  }
  tableUnderWay_.clear();
}

void TDBSync::DropObsoleteTables(const TStringList& targetTables) {
  ForEachTable(targetTables, "Dropping obsolete tables", [this](const std::string& table) {
    if (Reference().FindTable(table)) return;
    const std::string statement = Format("drop table %s;", table);
    AddToActions(saDropTable, table, statement, {});
    TgtConn->ParseDDL(statement);
  });
}

void TDBSync::CompareTables(const TStringList& referenceTables, const std::string& title, TTablePass pass) {
  ForEachTable(referenceTables, title, [this, pass](const std::string& table) {
    if (Target().FindTable(table) && CreationTextsDiffer(table)) (this->*pass)(table);
  });
}

// Nothing is replayed here: no later decision depends on a new table.
void TDBSync::CreateNewTables(const TStringList& referenceTables) {
  ForEachTable(referenceTables, "New tables", [this](const std::string& table) {
    if (Target().FindTable(table)) return;
    std::string ddl;
    Reference().GotoTable(table);
    Reference().CachedTableDDL(table, ddl);
    AddToActions(saCreateTable, table, ddl, {});
  });
}

// Equal texts spare the table any further look. The passes ask again, since a fetch forgets the text.
bool TDBSync::CreationTextsDiffer(const std::string& table) {
  const std::string& reference = Reference().CachedTableDDL(table);
  return reference != Target().CachedTableDDL(table);
}

void TDBSync::GotoFetched(const std::string& table) {
  Reference().GotoTable(table);
  Target().GotoTable(table);
  RefConn->FetchIfNeeded();
  TgtConn->FetchIfNeeded();
  ExpectFetched(Reference(), table);
  ExpectFetched(Target(), table);
}

void TDBSync::AddToActions(int action, const std::string& table, const std::string& description,
                           const std::string& item) {
  const TSyncActionInfo* info = FindSyncAction(action);
  if (info == nullptr) RaiseError(kUnhandledAction);
  const std::string text = info->LogText(table, item);
  ActionLog.push_back(text);
  const TActionRow& row = data_.mtActions.Append(action, table, item, description);
  tree_.AddToTree(info->id, table, row.id, text);
}

void TDBSync::ActionName(int id, std::string& text) { text = SyncAction(id).word; }

}  // namespace velmora
