// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A difference that a comparison found, as whoever decides about it reads it.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

enum class EDifferenceState { New, Changed, Obsolete };
enum class EDifferenceKind {
  Table,
  Column,
  Index,
  ForeignKey,
  Constraint,
  Options,
  Partitioning,
  // What stands beside tables: `table` is the kind's title, `item` the object.
  View,
  Trigger,
  Procedure,
  Function,
  Event
};

struct TDifference {
  int id = 0;  // of its action row
  std::string table;
  std::string item;  // empty for a whole table
  EDifferenceKind kind = EDifferenceKind::Table;
  EDifferenceState state = EDifferenceState::Changed;
  std::string text;           // "Changed column total"
  std::string detail;         // what changes, on one line: "varchar(300) -> varchar(255)"; may be empty
  std::string unsafe;         // why it may lose data; empty for what is safe
  std::size_t statement = 0;  // the first that makes it, counted from 0 in the script of all differences
  std::string note{};         // what a reference that is not MySQL has here, and what to know of it; may have lines
  std::string lock{};         // what it costs others meanwhile: "instant"; empty where nobody knows the server
  std::string rename{};       // what may be meant instead, as ReadRename takes it; empty for nothing that is offered
  double score = 0;           // of that; up to 1
  std::string renamed{};      // the rename that it is, likewise
  bool other_engine = false;  // of options: the table's engine is another one
  std::string trigger_table{};
};

// A statement of a script that the comparison planned.
struct TPlannedStatement {
  std::size_t start = 0;     // its bytes in the script, from 0
  std::size_t end = 0;       // after the last one
  std::vector<int> actions;  // ids of the actions that it serves
};

std::string_view StateWord(EDifferenceState state);  // "new", "changed", "obsolete"
std::string_view KindWord(EDifferenceKind kind);     // "table", "foreign key", ...
std::string_view KindTitle(EDifferenceKind kind);    // "Tables", "Foreign keys", ...
bool OfTable(EDifferenceKind kind);                  // false for what stands beside tables

}  // namespace velmora
