// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StructureView.h"

#include "util/Errors.h"

namespace velmora {

namespace {

template <class Render>
TRenderedText Rendered(Render render) {
  TRenderedText rendered;
  std::string text;
  try {
    render(text);
    rendered.text = std::move(text);
  } catch (const EVelmora& error) {
    rendered.error = error.what();
  }
  return rendered;
}

template <class Row, class Get>
TStringList ListOf(const std::list<Row>& rows, Get get) {
  TStringList list;
  for (const Row& row : rows) list.push_back(get(row));
  return list;
}

}  // namespace

TTableView ViewTable(TDBConn& conn, const TTableRow& table) {
  const TMeta& meta = conn.meta();
  TTableView view;
  view.name = table.name;
  view.type = table.type;
  for (const TColumnRow& row : meta.tColumns.RowsOf(table.id)) {
    view.columns.push_back(
        {row, Rendered([&](std::string& text) { conn.ColumnDescription(ColumnRecord(table, row), true, text); })});
  }
  for (const TKeyRow& row : meta.tKeys.RowsOf(table.id)) {
    const auto& fields = meta.tKeyFields.RowsOf(row.id);
    view.keys.push_back(
        {row, ListOf(fields, [](const TKeyFieldRow& field) { return field.column; }),
         ListOf(fields, [](const TKeyFieldRow& field) { return field.order; }),
         Rendered([&](std::string& text) { conn.KeyDescription(meta.KeyRecord(table, row), true, text); })});
  }
  for (const TConstraintRow& row : meta.tConstraints.RowsOf(table.id)) {
    const auto& fields = meta.tConstraintFields.RowsOf(row.id);
    view.constraints.push_back({row,
                                ListOf(fields, [](const TConstraintFieldRow& field) { return field.local_column; }),
                                ListOf(fields, [](const TConstraintFieldRow& field) { return field.foreign_column; }),
                                Rendered([&](std::string& text) {
                                  conn.ConstraintDescription(meta.ConstraintRecord(table, row), true, text);
                                })});
  }
  return view;
}

std::vector<TTableView> ViewTables(TDBConn& conn) {
  std::vector<TTableView> views;
  for (const TTableRow& table : conn.meta().tTables.Rows()) views.push_back(ViewTable(conn, table));
  return views;
}

TTableView FetchAndView(TDBConn& conn, const std::string& table) {
  try {
    conn.meta().GotoTable(table);
    conn.meta().CheckFetched();
    return ViewTable(conn, conn.meta().tTables.Current());
  } catch (const EVelmora& error) {
    TTableView view;
    view.name = table;
    view.error = error.what();
    return view;
  }
}

}  // namespace velmora
