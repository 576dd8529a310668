// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/SyncActions.h"

#include <cstddef>

#include "core/DBConn.h"
#include "core/Meta.h"
#include "sync/Data.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kUnhandledAction[] = "Unhandled sync action";

// --- The statements of the script. Names stand in them as the stores hold them, without quotes.

std::string CreateTableStatement(TDBConn& reference, TDBConn&, const TActionRow& row) {
  std::string ddl;
  reference.meta().CachedTableDDL(row.table, ddl);
  return ddl;
}

std::string DropTableStatement(TDBConn&, TDBConn&, const TActionRow& row) {
  return Format("drop table %s;", row.table);
}

// The reference's own engine renders the column here, where the comparison lets the target's do it.
std::string ColumnStatement(TDBConn& reference, const TActionRow& row, const char* verb) {
  std::string column;
  reference.meta().ColumnDefinition(row.table, row.item, column);
  return Format("alter table %s %s column %s %s", row.table, verb, row.item, column);
}

std::string AddColumnStatement(TDBConn& reference, TDBConn&, const TActionRow& row) {
  return ColumnStatement(reference, row, "add");
}

// Deliberate: the place of the column is not part of the statement, only of the action's description.
std::string ModifyColumnStatement(TDBConn& reference, TDBConn&, const TActionRow& row) {
  return ColumnStatement(reference, row, "modify");
}

// Deliberate: the column leaves the target's store for good. Its statements come as one text of several lines.
std::string DropColumnStatement(TDBConn&, TDBConn& target, const TActionRow& row) {
  std::string sql;
  target.meta().DropColumnSQL(row.table, row.item, sql);
  return sql;
}

std::string KeyText(TDBConn& reference, const TActionRow& row) {
  std::string key;
  reference.meta().KeyDefinition(row.table, row.item, key);
  return key;
}

// Deliberate: the name of the key stands in front of a text that begins with its kind and holds the name again, as in
// "add ix key `ix` (a)"; users know this line and edit it before they run the script.
std::string AddKeyStatement(TDBConn& reference, TDBConn&, const TActionRow& row) {
  return Format("alter table %s add %s %s;", row.table, row.item, KeyText(reference, row));
}

std::string ModifyKeyStatement(TDBConn& reference, TDBConn&, const TActionRow& row) {
  return Format("alter table %s modify %s;", row.table, KeyText(reference, row));
}

std::string DropKeyStatement(TDBConn&, TDBConn&, const TActionRow& row) {
  const std::string key = row.item == kPrimaryKeyName ? row.item : "key " + row.item;
  return Format("alter table %s drop %s;", row.table, key);
}

std::string ConstraintStatement(TDBConn& reference, const TActionRow& row, const char* verb) {
  std::string constraint;
  reference.meta().ConstraintDefinition(row.table, row.item, constraint);
  return Format("alter table %s %s %s;", row.table, verb, constraint);
}

std::string AddConstraintStatement(TDBConn& reference, TDBConn&, const TActionRow& row) {
  return ConstraintStatement(reference, row, "add");
}

std::string ModifyConstraintStatement(TDBConn& reference, TDBConn&, const TActionRow& row) {
  return ConstraintStatement(reference, row, "modify");
}

std::string DropConstraintStatement(TDBConn&, TDBConn&, const TActionRow& row) {
  return Format("alter table %s drop foreign key %s;", row.table, row.item);
}

std::string ChangeTableTypeStatement(TDBConn& reference, TDBConn&, const TActionRow& row) {
  reference.meta().GotoTable(row.table);
  return Format("alter table %s type=%s", row.table, reference.meta().tTables.Current().type);
}

// The exact dialect writes its statements by itself.
[[noreturn]] std::string NoStatement(TDBConn&, TDBConn&, const TActionRow&) { RaiseError(kUnhandledAction); }

constexpr auto kTable = ELogSubject::Table;
constexpr auto kItem = ELogSubject::Item;

constexpr std::array<TSyncActionInfo, kSyncActionCount> kActions{{
    {saCreateTable, "Create table", "New table ", kTable, kIconNewTable, CreateTableStatement},
    {saDropTable, "Drop table", "Obsolete table ", kTable, kIconObsoleteTable, DropTableStatement},
    {saAddColumn, "Add column", "New column ", kItem, kIconNew, AddColumnStatement},
    {saModifyColumn, "Modify column", "Changed column ", kItem, kIconChanged, ModifyColumnStatement},
    {saDropColumn, "Drop column", "Obsolete column ", kItem, kIconObsolete, DropColumnStatement},
    {saAddKey, "Add key", "New index ", kItem, kIconNew, AddKeyStatement},
    {saModifyKey, "Modify key", "Changed index ", kItem, kIconChanged, ModifyKeyStatement},
    {saDropKey, "Drop key", "Obsolete index ", kItem, kIconObsolete, DropKeyStatement},
    {saAddConstraint, "Add constraint", "New constraint ", kItem, kIconNew, AddConstraintStatement},
    {saModifyConstraint, "Modify constraint", "Changed constraint ", kItem, kIconChanged, ModifyConstraintStatement},
    {saDropConstraint, "Drop constraint", "Obsolete constraint ", kItem, kIconObsolete, DropConstraintStatement},
    {saChangeTableType, "Change table type", "Changed type of table ", kTable, kIconChanged, ChangeTableTypeStatement},
    {saCreateObject, "Create object", "New ", kItem, kIconNew, NoStatement},
    {saChangeObject, "Change object", "Changed ", kItem, kIconChanged, NoStatement},
    {saDropObject, "Drop object", "Obsolete ", kItem, kIconObsolete, NoStatement},
    {saRename, "Rename", "Renamed ", kItem, kIconChanged, NoStatement},
}};

}  // namespace

std::string TSyncActionInfo::LogText(const std::string& table, const std::string& item) const {
  return std::string(log_text) + (log_subject == ELogSubject::Table ? table : item);
}

const std::array<TSyncActionInfo, kSyncActionCount>& SyncActions() { return kActions; }

const TSyncActionInfo* FindSyncAction(int id) {
  if (id < 0 || id >= kSyncActionCount) return nullptr;
  return &kActions[static_cast<std::size_t>(id)];
}

const TSyncActionInfo& SyncAction(int id) {
  const TSyncActionInfo* action = FindSyncAction(id);
  if (action == nullptr) RaiseError(kUnhandledAction);
  return *action;
}

}  // namespace velmora
