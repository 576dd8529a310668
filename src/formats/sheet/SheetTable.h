// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The rule by which a sheet of cells is a table. It follows what the maker of the Jet provider publishes about sheets
// ("How to use ADO with Excel data", "Initializing the Microsoft Excel driver").

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/port/FileReader.h"

namespace velmora {

// Row and column count from 0. The value is a number, a moment that has a text, or a text that is not empty.
struct TSheetCell {
  std::uint32_t row = 0;
  std::uint32_t column = 0;
  TVariant value;
};

struct TSheet {
  std::string name;
  std::vector<TSheetCell> cells = {};  // in any order; of two in one place the last counts
};

struct TSheetRule {
  bool names = true;          // the first row holds the names of the columns; else they are F1, F2, ...
  bool mixed_as_text = true;  // a column of several kinds is text; else it is of the kind that most cells have
};

enum class ESheetKind { Number, Date, Text };

struct TSheetColumn {
  std::string name;
  ESheetKind kind = ESheetKind::Text;
  bool is_long = false;     // of a text column: most texts have more than 255 letters
  std::uint32_t mixed = 0;  // kColumnIsMixed, kColumnIsMixedLong
};

// The table starts at the first row and column that hold something and ends with the last ones. The first 8 rows of
// data decide on the kinds of its columns; what does not fit them further down is null, save that a text column takes
// every value as text where mixed columns are text.
class TSheetTable {
 public:
  TSheetTable(std::vector<TSheetCell> cells, TSheetRule rule);  // of one cell at least

  const std::vector<TSheetColumn>& Columns() const { return columns_; }
  TFileTable Structure(const std::string& table) const;
  // The first `limit` rows, or kAllRows. Raises an error for a handful of cells that are scattered over so many rows
  // and columns that nearly nothing but nulls would be held.
  TRowsOfValues Rows(std::int64_t limit) const;

 private:
  void FindColumns();

  std::vector<TSheetCell> cells_;  // by row
  TSheetRule rule_;
  std::uint32_t first_row_ = 0;  // of the data
  std::uint32_t end_row_ = 0;
  std::uint32_t first_column_ = 0;
  std::vector<TSheetColumn> columns_;
};

// A name as columns and tables can have it: "." "!" "[" "]" are "#" "_" "(" ")", as are "_" the control characters;
// without blanks at its ends, and cut at 64 letters.
std::string SheetWord(std::string_view text);

// Gives every name that an earlier one already is, but for the case of letters, the lowest number after it that makes
// it differ from all.
void MakeDistinct(std::vector<std::string>& names);

}  // namespace velmora
