// SPDX-License-Identifier: GPL-3.0-or-later

// The creation text of a table, composed from the rows of the store.

#include "core/DBConn.h"
#include "core/Meta.h"
#include "util/Format.h"

namespace velmora {
namespace {

// Calls `visit` with each row of a detail table current. Rendering may move the cursors, so each row is gone to anew.
template <class Row, class Visit>
void VisitRows(TMeta& meta, TMetaTable<Row>& details, Visit visit) {
  const auto table = meta.tTables.Mark();
  auto& rows = details.Rows();
  for (auto row = rows.begin(); row != rows.end(); ++row) {
    meta.tTables.GoTo(table);
    details.GoTo(row);
    visit();
  }
  meta.tTables.GoTo(table);
}

}  // namespace

// The owner reads the rows, `writer` says them in its dialect. Deliberate: columns stand unquoted, and what the writer
// renders as nothing still has its line.
void TMeta::BuildCreateTable(const std::string& table, TDBConn* engine, std::string& ddl) {
  GotoTable(table);
  CheckFetched();
  TDBConn& reader = Owner();
  TDBConn& writer = engine == nullptr ? reader : *engine;
  TStringList lines;
  std::string text;
  VisitRows(*this, tColumns, [&] {
    TMetaColumn column;
    reader.ReadColumn(column);
    writer.ColumnDescription(column, true, text);
    lines.push_back("\t" + column.name + " " + text);
  });
  VisitRows(*this, tKeys, [&] {
    TMetaKey key;
    reader.ReadKey(key);
    writer.KeyDescription(key, true, text);
    lines.push_back("\t" + text);
  });
  VisitRows(*this, tConstraints, [&] {
    TMetaConstraint constraint;
    reader.ReadConstraint(constraint);
    writer.ConstraintDescription(constraint, true, text);
    lines.push_back("\t" + text);
  });
  ddl = Format("create table %s(\r\n%s\r\n) type=%s", reader.QuoteName(table), JoinList(lines, ",\r\n"),
               tTables.Current().type);
}

}  // namespace velmora
