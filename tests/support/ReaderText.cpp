// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ReaderText.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"
#include "support/ShownValues.h"
#include "util/Format.h"

namespace velmora::testing {
namespace {

std::string FieldText(const TFieldDef& field, bool autoincrement) {
  return " " + std::string(FieldKindName(field.kind)) + (field.size != 0 ? Format("(%d)", field.size) : "") +
         (autoincrement ? " auto" : "");
}

std::string ColumnText(const TOLEDBColumnRow& column) {
  std::string text = Format("column %s type %d", column.COLUMN_NAME, column.DATA_TYPE);
  if (column.COLUMN_FLAGS != 0) text += Format(" flags %d", column.COLUMN_FLAGS);
  if (column.CHARACTER_MAXIMUM_LENGTH != 0) text += Format(" length %d", column.CHARACTER_MAXIMUM_LENGTH);
  if (column.NUMERIC_PRECISION != 0) text += Format(" numeric %d,%d", column.NUMERIC_PRECISION, column.NUMERIC_SCALE);
  if (column.IS_NULLABLE) text += " null";
  return text + (column.COLUMN_DEFAULT ? " default " + *column.COLUMN_DEFAULT : "");
}

}  // namespace

std::string ColumnsText(const TFileTable& table) {
  std::string text;
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    EXPECT_EQ(table.columns[i].TABLE_NAME, table.columns[0].TABLE_NAME);
    EXPECT_EQ(table.columns[i].ORDINAL_POSITION, i + 1);
    EXPECT_EQ(table.columns[i].COLUMN_NAME, table.fields[i].name);
    text += ColumnText(table.columns[i]) + FieldText(table.fields[i], table.is_autoincrement[i]) + "\n";
  }
  return text;
}

std::string KeysText(const TFileTable& table) {
  std::string text;
  for (auto row = table.indexes.begin(); row != table.indexes.end();) {
    const TOLEDBIndexRow& first = *row;
    text += "key " + first.INDEX_NAME + "(" + first.COLUMN_NAME;
    EXPECT_EQ(first.ORDINAL_POSITION, 1U);
    EXPECT_EQ(first.TABLE_NAME, table.columns[0].TABLE_NAME);
    for (++row; row != table.indexes.end() && row->ORDINAL_POSITION != 1; ++row) text += "," + row->COLUMN_NAME;
    text += Format(")%s%s\n", first.PRIMARY_KEY ? " primary" : "", first.UNIQUE ? " unique" : "");
  }
  return text;
}

std::string RowsText(const TFileRows& rows) {
  std::string text;
  for (std::size_t i = 0; i < rows.rows.size(); ++i)
    text += "row " + (rows.numbers.empty() ? "" : Format("%d: ", rows.numbers[i])) + ShownRow(rows.rows[i]) + "\n";
  return text;
}

std::string TableText(TFileReader& reader, const TOLEDBTableRow& table) {
  std::string structure, rows;
  const std::string bad_structure = MessageOf([&] {
    const TFileTable found = reader.Structure(table.TABLE_NAME);
    structure = ColumnsText(found) + KeysText(found);
    EXPECT_TRUE(found.columns.empty() || found.columns[0].TABLE_NAME == table.TABLE_NAME);
  });
  const std::string bad_rows = MessageOf([&] { rows = RowsText(reader.Rows(table.TABLE_NAME, kAllRows)); });
  std::string text = "table " + table.TABLE_NAME + " " + table.TABLE_TYPE + "\n" + structure + rows;
  if (bad_structure == bad_rows) return text + (bad_rows == kNoFault ? "" : "fault: " + bad_rows + "\n");
  if (bad_structure != kNoFault) text += "structure: " + bad_structure + "\n";
  return text + (bad_rows == kNoFault ? "" : "rows: " + bad_rows + "\n");
}

std::string ReaderText(TFileReader& reader) {
  std::string text;
  for (const TOLEDBTableRow& table : reader.Tables()) text += TableText(reader, table);
  return text;
}

}  // namespace velmora::testing
