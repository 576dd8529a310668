// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/EngineText.h"

#include "core/Meta.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/ShownValues.h"
#include "util/Format.h"

namespace velmora::testing {
namespace {

// What `body` adds to a text, or the message of its error.
std::string OrFault(const std::function<std::string()>& body) {
  std::string text;
  bool done = false;
  const std::string message = MessageOf([&] {
    text = body();
    done = true;
  });
  return done ? text : "fault: " + message + "\n";
}

std::string TableRows(TDBConn& conn, const std::string& table) {
  TTableGuard rows(conn, table);
  std::string text;
  for (const TFieldDef& field : rows->Fields())
    text += (text.empty() ? "fields of " + table + ": " : ", ") + field.name + " " +
            std::string(FieldKindName(field.kind)) + (field.size != 0 ? Format("(%d)", field.size) : "");
  return text + "\n" + RowLines(*rows);
}

}  // namespace

std::string EngineText(TDBConn& conn) {
  conn.Connect();
  std::string faults, rows;
  const auto tables = conn.meta().tTables.Rows();
  for (const TTableRow& table : tables) {
    conn.meta().GotoTable(table.name);
    faults += OrFault([&] { return conn.FetchIfNeeded(), std::string(); });
    rows += OrFault([&] { return TableRows(conn, table.name); });
  }
  return DumpMeta(conn.meta()) + faults + rows;
}

std::string RowLines(TDataset& rows) {
  std::string text;
  for (; !rows.Eof(); rows.Next()) {
    std::vector<TVariant> row;
    for (std::size_t i = 0; i < rows.Fields().size(); ++i) row.push_back(rows.Value(i));
    text += "row " + ShownRow(row) + "\n";
  }
  return text;
}

}  // namespace velmora::testing
