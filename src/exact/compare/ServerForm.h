// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What servers make of tables as people write them: keys and foreign keys within columns become elements of their own,
// those without names get some, a foreign key brings its index along, and defaults, prefixes and types are settled.
// What a server has printed stays as it is.

#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/Lexer.h"
#include "mysqltext/TableText.h"

namespace velmora {

// In what servers differ.
struct TServerTraits {
  bool mysql = false;               // as against MariaDB
  int version = 0;                  // 101106 for 10.11.6; 0 where nobody knows, for the newest
  bool inline_references = true;    // within a column they make foreign keys
  bool explicit_timestamps = true;  // a timestamp of which nothing else is said may be null
  bool local_time_of_day = false;   // localtime has no date
};

// Texts with raw line ends say them by \r and \n from here on, which no editor and no script changes. Raises for a name
// with one, which cannot be written otherwise.
std::string WithoutRawLineEnds(std::string_view statement);
// ReadTableText of such a text; `tokens` are those of `statement`.
TTableText ReadTableWithoutRawLineEnds(std::string_view statement, TTokens tokens);

// Takes keys, foreign keys and more out of a column, and gives them as elements, as they would stand after the column.
std::vector<TElement> TakeInlineElements(TElement& column, const TServerTraits& server);

// Adds keys, constraints and the like as one statement does. `first` is for the statement that makes the table. A key
// that a foreign key has brought along goes when another one serves.
void AddElements(std::vector<TElement> added, bool first, const TServerTraits& server, TTableText& table);

// What only foreign keys of the table's own engine and columns of its keys know: to be called after each statement.
void SettleTable(TTableText& table);

// A foreign key with its references to table `from` of the same database turned to `to`.
void MoveReferences(TElement& foreign_key, std::string_view from, std::string_view to);

// A foreign key without the name of the database that it stands in itself.
void LeaveDatabase(TElement& foreign_key, std::string_view database);

// Names that servers have made of a table's name follow it.
void MoveMadeNames(TTableText& table, std::string_view from, const TServerTraits& server);
// Those of a table made like another one: MySQL names its checks anew, in the order of their names.
void MakeNamesAnew(TTableText& table, const TServerTraits& server);

// A column's new name in the elements that name it, of the table itself: keys, foreign keys, expressions.
void RenameColumnIn(TElement& element, std::string_view from, std::string_view to);
// The same in the columns to which a foreign key refers.
void RenameReferenced(TElement& foreign_key, std::string_view from, std::string_view to);

// The key, or the column, under another name.
void RenameKey(TElement& key, const std::string& name);
void RenameColumn(TElement& column, const std::string& name);

}  // namespace velmora
