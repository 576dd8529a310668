// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Sheets from short texts, and structure and rows as such.

#include <string>
#include <vector>

#include "formats/port/FileReader.h"
#include "formats/sheet/SheetTable.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

inline TVariant CellValue(const std::string& text) {
  if (text.starts_with('@')) return TMoment{ParseDateTime(text.substr(1))};
  if (const auto number = TryStrToFloat(text)) return *number;
  return text;
}

// Rows after "/", cells after "|"; a number, a moment as in "@2001-02-03 04:05:06", else text; empty is no cell.
inline std::vector<TSheetCell> CellsOf(std::string grid) {
  std::vector<TSheetCell> cells;
  for (std::uint32_t row = 0; !grid.empty(); ++row) {
    std::string line = StrChop("/", grid, true);
    for (std::uint32_t column = 0; !line.empty(); ++column)
      if (const std::string text = StrChop("|", line, true); !text.empty())
        cells.push_back({row, column, CellValue(text)});
  }
  return cells;
}

// As in "id 5, name 130(255), note 130 long".
inline std::string Shown(const TFileTable& table) {
  std::string text;
  for (const TOLEDBColumnRow& column : table.columns) {
    text += (text.empty() ? "" : ", ") + column.COLUMN_NAME + " " + std::to_string(column.DATA_TYPE);
    if (column.CHARACTER_MAXIMUM_LENGTH != 0) text += "(" + std::to_string(column.CHARACTER_MAXIMUM_LENGTH) + ")";
    if ((column.COLUMN_FLAGS & kColumnIsLong) != 0) text += " long";
  }
  return text;
}

// As in "1|a|-/2|b|2001-02-03/": a "/" after each row, "-" for null.
inline std::string Shown(const TRowsOfValues& rows) {
  std::string text;
  for (const TMemDataset::TRow& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const auto* moment = std::get_if<TMoment>(&row[i]);
      text += i > 0 ? "|" : "";
      text += VarIsNull(row[i]) ? "-" : moment != nullptr ? DateTimeText(moment->value) : VarToText(row[i]);
    }
    text += "/";
  }
  return text;
}

inline std::string Shown(TDataset& rows) {
  TRowsOfValues values;
  for (; !rows.Eof(); rows.Next()) {
    values.emplace_back();
    for (std::size_t i = 0; i < rows.Fields().size(); ++i) values.back().push_back(rows.Value(i));
  }
  return Shown(values);
}

inline std::string TablesOf(TFileReader& reader) {
  std::string text;
  for (const TOLEDBTableRow& table : reader.Tables()) text += (text.empty() ? "" : ", ") + table.TABLE_NAME;
  return text;
}

inline std::string RowsOf(TFileReader& reader, const std::string& table) {
  return Shown(reader.Rows(table, kAllRows).rows);
}

}  // namespace velmora::testing
