// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Structure and rows of tables as short texts.

#include <string>

#include "core/DBConn.h"
#include "core/Meta.h"

namespace velmora::testing {

// As in "id <I4>, name <VARCHAR> 255"; fetches the table.
inline std::string ColumnsOf(TDBConn& conn, const std::string& table) {
  conn.meta().GotoTable(table);
  conn.FetchIfNeeded();
  std::string text;
  for (const TColumnRow& column : conn.meta().tColumns.Rows()) {
    text += (text.empty() ? "" : ", ") + column.name + " " + std::string(NeutralTag(column.datatype));
    if (column.size.value_or(0) != 0) text += " " + std::to_string(*column.size);
    if (column.precision) text += "," + std::to_string(*column.precision);
    if (column.autoinc) text += " auto";
  }
  return text;
}

// As in "1|a|-/2||x/": a "/" after each row, "-" for null.
inline std::string RowsOf(TDataset& rows) {
  std::string text;
  for (; !rows.Eof(); rows.Next()) {
    for (std::size_t i = 0; i < rows.Fields().size(); ++i)
      text += (i > 0 ? "|" : "") + (VarIsNull(rows.Value(i)) ? "-" : VarToText(rows.Value(i)));
    text += "/";
  }
  return text;
}

inline std::string RowsOf(TDBConn& conn, const std::string& table) {
  TTableGuard rows(conn, table);
  return RowsOf(*rows);
}

}  // namespace velmora::testing
