// SPDX-License-Identifier: GPL-3.0-or-later

// Removal from the store, with the statements that do the same on a server: what hangs on an object goes first.
// The walks stand on rows that are in memory, so they fetch nothing; only the object that is asked for by name is
// fetched where it must be found.

#include "core/Meta.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kLineEnd[] = "\r\n";

}  // namespace

std::string TMeta::EraseConstraint(const std::string& table) {
  std::string sql = Format("alter table %s drop foreign key %s;", table, tConstraints.Current().name);
  tConstraintFields.DeleteOf(tConstraints.CurrentId());
  tConstraints.Delete();
  return sql;
}

template <class Falls>
std::string TMeta::EraseConstraints(const std::string& table, Falls falls) {
  std::string sql;
  tConstraints.First();
  while (!tConstraints.Eof()) {
    if (falls(tConstraints.Current())) {
      sql += EraseConstraint(table) + kLineEnd;
      tConstraints.First();
    } else {
      tConstraints.Next();
    }
  }
  return sql;
}

template <class Falls>
std::string TMeta::EraseReferences(const std::string& table, Falls falls) {
  TStringList referencing;
  ReferencingTables(table, referencing);
  std::string sql;
  for (const std::string& name : referencing) {
    GotoTable(name);
    sql += EraseConstraints(name, [&](const TConstraintRow& row) {
      return row.constraint_type == kForeignKeyConstraint && row.foreign_table == table && falls(row);
    });
  }
  return sql;
}

void TMeta::DropConstraintSQL(const std::string& table, const std::string& constraint, std::string& sql) {
  GotoConstraint(table, constraint);
  EraseConstraint(table);
  sql = Format("alter table %s drop foreign key %s;", table, constraint);
}

// The last index that carries a foreign key takes that with it, and the foreign key's statement comes first.
std::string TMeta::EraseKey(const std::string& table, const std::string& key) {
  const auto mark = tKeys.Mark();
  const std::string columns = KeyFieldList(",");
  const bool twin = std::any_of(tKeys.Rows().begin(), tKeys.Rows().end(), [&](const TKeyRow& row) {
    return row.name != mark->name && KeyFieldListOf(row.id, ",") == columns;
  });
  std::string sql;
  if (!twin)
    sql = EraseConstraints(table, [&](const TConstraintRow& row) { return LocalColumnListOf(row.id, ",") == columns; });
  tKeys.GoTo(mark);
  tKeyFields.DeleteOf(mark->id);
  tKeys.Delete();
  return sql + Format("alter table %s drop %s;", table, key == kPrimaryKeyName ? key : "key " + key);
}

void TMeta::DropKeySQL(const std::string& table, const std::string& key, std::string& sql) {
  GotoKey(table, key);
  sql = EraseKey(table, key);
}

// Deliberate: at most one constraint of the table itself falls with a column.
std::string TMeta::EraseLocalConstraint(const std::string& table, const std::string& column) {
  for (tConstraints.First(); !tConstraints.Eof(); tConstraints.Next())
    if (tConstraintFields.Locate(column)) return EraseConstraint(table) + kLineEnd;
  return {};
}

// Takes the column out of every key. Deliberate: the walk ends with the first key that this empties, which goes too.
std::string TMeta::EraseKeyFields(const std::string& table, const std::string& column) {
  for (tKeys.First(); !tKeys.Eof(); tKeys.Next()) {
    if (!tKeyFields.LocateExact(column)) continue;
    tKeyFields.Delete();
    if (tKeyFields.Empty()) return EraseKey(table, std::string(tKeys.Current().name)) + kLineEnd;
  }
  return {};
}

void TMeta::DropColumnSQL(const std::string& table, const std::string& column, std::string& sql) {
  std::string text = EraseReferences(table, [&](const TConstraintRow& row) {
    const auto& fields = tConstraintFields.RowsOf(row.id);
    return std::any_of(fields.begin(), fields.end(),
                       [&](const TConstraintFieldRow& field) { return field.foreign_column == column; });
  });
  GotoTable(table);
  text += EraseLocalConstraint(table, column);
  GotoTable(table);
  text += EraseKeyFields(table, column);
  GotoColumn(table, column);
  tColumns.Delete();
  sql = text + Format("alter table %s drop column %s;", table, column);
}

void TMeta::DropTableSQL(const std::string& table, std::string& sql) {
  const std::string drop = "drop table if exists " + table + ";";  // the argument may be a text of the deleted row
  const std::string text = EraseReferences(table, [](const TConstraintRow&) { return true; });
  GotoTable(table);
  EraseDetails();
  tTables.Delete();
  sql = text + drop;
}

}  // namespace velmora
