#pragma once

// Fills a store by hand, a line per object.

#include <initializer_list>
#include <string>

#include "core/Meta.h"

namespace velmora::testing {

// A store without an engine. Tables count as fetched unless a test says otherwise.
class TMetaBuilder {
 public:
  explicit TMetaBuilder(TMeta& meta) : meta_(meta) {}

  TMetaBuilder& Table(const std::string& name, std::initializer_list<const char*> columns = {}) {
    TTableRow& row = meta_.tTables.Append();
    row.name = name;
    row.fetched = true;
    meta_.tTables.Post();
    for (const char* column : columns) Column(column);
    return *this;
  }
  TMetaBuilder& Column(const std::string& name) {
    meta_.tColumns.Append().name = name;
    meta_.tColumns.Post();
    return *this;
  }
  TMetaBuilder& Key(const std::string& name, std::initializer_list<const char*> columns) {
    TKeyRow& row = meta_.tKeys.Append();
    row.name = name;
    row.primary = row.unique = name == kPrimaryKeyName;
    meta_.tKeys.Post();
    for (const char* column : columns) {
      meta_.tKeyFields.Append().column = column;
      meta_.tKeyFields.Post();
    }
    return *this;
  }
  // Pairs of local and foreign column.
  TMetaBuilder& ForeignKey(const std::string& name, const std::string& table,
                           std::initializer_list<std::pair<const char*, const char*>> fields) {
    TConstraintRow& row = meta_.tConstraints.Append();
    row.constraint_type = kForeignKeyConstraint;
    row.name = name;
    row.foreign_table = table;
    meta_.tConstraints.Post();
    for (const auto& [local, foreign] : fields) {
      TConstraintFieldRow& field = meta_.tConstraintFields.Append();
      field.local_column = local;
      field.foreign_column = foreign;
      meta_.tConstraintFields.Post();
    }
    return *this;
  }

 private:
  TMeta& meta_;
};

// "t(a,b) key k(a) fk f(a)->p(id)": one table of the store on one line.
inline std::string Shape(const TMeta& meta, const std::string& table) {
  for (const TTableRow& row : meta.tTables.Rows()) {
    if (row.name != table) continue;
    const auto join = [](std::string& text, const std::string& item) { text += (text.empty() ? "" : ",") + item; };
    std::string columns;
    for (const TColumnRow& column : meta.tColumns.RowsOf(row.id)) join(columns, column.name);
    std::string text = table + "(" + columns + ")";
    for (const TKeyRow& key : meta.tKeys.RowsOf(row.id)) {
      std::string fields;
      for (const TKeyFieldRow& field : meta.tKeyFields.RowsOf(key.id)) join(fields, field.column);
      text += " key " + key.name + "(" + fields + ")";
    }
    for (const TConstraintRow& constraint : meta.tConstraints.RowsOf(row.id)) {
      std::string fields;
      for (const TConstraintFieldRow& field : meta.tConstraintFields.RowsOf(constraint.id))
        join(fields, field.local_column + ":" + field.foreign_column);
      text += " fk " + constraint.name + "(" + fields + ")->" + constraint.foreign_table;
    }
    return text;
  }
  return "-";
}

}  // namespace velmora::testing
