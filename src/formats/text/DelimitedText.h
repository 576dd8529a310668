// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Dataset.h"
#include "formats/text/TextFile.h"
#include "util/Lists.h"

namespace velmora {

// A delimited text file as a table: its columns, with types that come from the data, and its rows. Lines are split by
// SplitQuoted, with all that this does to quotes.
//
// Types come from lines 0 to 49 of the file, the line of names left out. Deliberate: the last value of a column that is
// not empty decides, not the widest one. "x" with its quotes is a text; then a date or time, a number with or without
// decimals (deliberate: whole numbers too are of kind Float), a hexadecimal integer. Deliberate: any other value, such
// as text without quotes or a pair of quotes with nothing between, fails the whole table. A column without values is a
// text.
class TDelimitedText {
 public:
  // Reads the file and finds its columns. `table` stands in messages. Raises "Cannot read %s: %s", EListError for an
  // empty file, "Invalid value for %s/%s: %s", "Unhandled column type %s/%s".
  TDelimitedText(std::string table, const std::string& path, std::string separator, bool hdr);

  const std::vector<TFieldDef>& Fields() const { return fields_; }

  // Gives every row of the file, with a value per field: a line with fewer values leaves the others null, an empty
  // value is null in a column of numbers or dates. `take` may move the row away. Raises EConvertError for a value that
  // its column does not take, and an error for a line with more values than columns; both name table and line.
  void ReadRows(const std::function<void(TMemDataset::TRow& row)>& take) const;

 private:
  // What the data of a column were last; unset where a column beyond the first line has shown nothing.
  enum class EMark { Unset, Blank, Integer, Float, DateTime, Quoted };

  void Split(std::size_t line, TStringList& values) const;
  std::size_t FirstRow() const { return hdr_ ? 1 : 0; }
  EMark MarkOf(const std::string& value) const;
  void InferMarks(TStringList& last_values);
  TStringList ColumnNames(const TStringList& last_values) const;
  TFieldDef FieldOf(std::size_t column, const std::string& name) const;
  TVariant ValueOf(std::size_t column, std::string_view text, std::size_t line) const;

  std::string table_;
  std::string separator_;
  bool hdr_;
  TTextLines lines_;
  std::vector<EMark> marks_;
  std::vector<TFieldDef> fields_;
};

}  // namespace velmora
