// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MetaBuilder.h"

#include <regex>

namespace velmora::testing {

namespace {

void AddTable(TMeta& meta, const std::string& name, const TStringList& columns) {
  TTableRow& row = meta.tTables.Append();
  row.name = name;
  row.fetched = true;
  meta.tTables.Post();
  for (const std::string& column : columns) meta.tColumns.Append().name = column;
  meta.tColumns.Post();
}

void AddKey(TMeta& meta, const std::string& name, const TStringList& columns) {
  TKeyRow& row = meta.tKeys.Append();
  row.name = name;
  row.primary = row.unique = name == kPrimaryKeyName;
  meta.tKeys.Post();
  for (const std::string& column : columns) meta.tKeyFields.Append().column = column;
  meta.tKeyFields.Post();
}

void AddConstraint(TMeta& meta, const std::string& name, const TStringList& pairs, const std::string& table) {
  TConstraintRow& row = meta.tConstraints.Append();
  row.constraint_type = kForeignKeyConstraint;
  row.name = name;
  row.foreign_table = table;
  meta.tConstraints.Post();
  for (const std::string& pair : pairs) {
    TConstraintFieldRow& field = meta.tConstraintFields.Append();
    field.local_column = pair.substr(0, pair.find(':'));
    field.foreign_column = pair.substr(pair.find(':') + 1);
  }
  meta.tConstraintFields.Post();
}

}  // namespace

void Build(TMeta& meta, const std::string& text) {
  static const std::regex kItem(" ?(key |fk |check )?([^()]*)\\(([^()]*)\\)(?:->([^ ]*))?");
  for (std::sregex_iterator item(text.begin(), text.end(), kItem), end; item != end; ++item) {
    const std::string kind = (*item)[1], name = (*item)[2];
    TStringList fields;
    SplitText(",", (*item)[3].str(), fields);
    if (kind.empty())
      AddTable(meta, name, fields);
    else if (kind == "key ")
      AddKey(meta, name, fields);
    else
      AddConstraint(meta, name, fields, (*item)[4]);
    if (kind == "check ") meta.tConstraints.Amend().constraint_type = kCheckConstraint;
  }
}

std::string Shape(const TMeta& meta, const std::string& table) {
  for (const TTableRow& row : meta.tTables.Rows()) {
    if (row.name != table) continue;
    TStringList columns;
    for (const TColumnRow& column : meta.tColumns.RowsOf(row.id)) columns.push_back(column.name);
    std::string text = table + "(" + JoinList(columns, ",") + ")";
    for (const TKeyRow& key : meta.tKeys.RowsOf(row.id)) {
      TStringList fields;
      for (const TKeyFieldRow& field : meta.tKeyFields.RowsOf(key.id)) fields.push_back(field.column);
      text += " key " + key.name + "(" + JoinList(fields, ",") + ")";
    }
    for (const TConstraintRow& constraint : meta.tConstraints.RowsOf(row.id)) {
      TStringList fields;
      for (const TConstraintFieldRow& field : meta.tConstraintFields.RowsOf(constraint.id))
        fields.push_back(field.local_column + ":" + field.foreign_column);
      text += (constraint.constraint_type == kCheckConstraint ? " check " : " fk ") + constraint.name + "(" +
              JoinList(fields, ",") + ")->" + constraint.foreign_table;
    }
    return text;
  }
  return "-";
}

}  // namespace velmora::testing
