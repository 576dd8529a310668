// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MetaDump.h"

namespace velmora::testing {
namespace {

std::string Flag(bool set, const char* word) { return set ? std::string(" ") + word : std::string(); }

std::string Field(const char* name, const std::string& value) {
  return value.empty() ? std::string() : " " + std::string(name) + "=" + value;
}

template <class Number>
std::string NumberText(const std::optional<Number>& number) {
  return number ? std::to_string(*number) : "-";
}

std::string Line(const TTableRow& row) {
  return "table " + row.name + Flag(!row.type.empty(), row.type.c_str()) + Flag(row.fetched, "fetched") + "\n";
}

std::string Line(const TColumnRow& row) {
  std::string text = "column " + row.name + " " + std::string(NeutralTag(row.datatype));
  if (row.size || row.precision) text += "(" + NumberText(row.size);
  if (row.precision) text += "," + NumberText(row.precision);
  if (row.size || row.precision) text += ")";
  return text + Flag(row.notnull, "notnull") + Field("default", row.default_) + Flag(row.autoinc, "autoinc") + "\n";
}

std::string Line(const TMeta& meta, const TKeyRow& row) {
  std::string columns;
  for (const TKeyFieldRow& field : meta.tKeyFields.RowsOf(row.id)) {
    columns += (columns.empty() ? "" : ",") + field.column + Flag(!field.order.empty(), field.order.c_str());
    if (field.size) columns += "(" + NumberText(field.size) + ")";
  }
  return "key " + row.name + "(" + columns + ")" + Flag(row.primary, "primary") + Flag(row.unique, "unique") +
         Flag(row.fulltext, "fulltext") + "\n";
}

std::string Line(const TMeta& meta, const TConstraintRow& row) {
  std::string local, foreign;
  for (const TConstraintFieldRow& field : meta.tConstraintFields.RowsOf(row.id)) {
    local += (local.empty() ? "" : ",") + field.local_column;
    foreign += (foreign.empty() ? "" : ",") + field.foreign_column;
  }
  std::string text = "constraint " + row.name + "(" + local + ")->" +
                     Iif<std::string>(row.foreign_db.empty(), "", row.foreign_db + ".") + row.foreign_table + "(" +
                     foreign + ")";
  if (row.constraint_type != kForeignKeyConstraint) text += " type=" + std::to_string(row.constraint_type);
  return text + Field("delete", row.delete_rule) + Field("update", row.update_rule) + Field("value", row.def_value) +
         Field("check", row.check_condition) + "\n";
}

}  // namespace

std::string DumpMeta(const TMeta& meta) {
  std::string text;
  for (const TTableRow& table : meta.tTables.Rows()) {
    text += Line(table);
    for (const TColumnRow& row : meta.tColumns.RowsOf(table.id)) text += Line(row);
    for (const TKeyRow& row : meta.tKeys.RowsOf(table.id)) text += Line(meta, row);
    for (const TConstraintRow& row : meta.tConstraints.RowsOf(table.id)) text += Line(meta, row);
  }
  return text;
}

}  // namespace velmora::testing
