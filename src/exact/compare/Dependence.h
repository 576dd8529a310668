// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What changes of a table need of other tables.

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "mysqltext/TableText.h"

namespace velmora {

// The table among `others`, which may not be as the reference has them, to which a table refers by a foreign key that
// changes, or whose columns do, from the one text to the other; empty for none. Null for a side without the table.
std::string ChangesBeside(const TTableText* reference, const TTableText* target,
                          const std::unordered_set<std::string>& others);

// A table that stays as the target has it.
struct TStayingTable {
  std::string name;
  std::string text;                 // its creation text
  std::optional<TTableText> table;  // nothing where that cannot be read
};

// The table among `others` that refers to a column which changes from the one text to the other, or may need a key that
// does; empty for none.
std::string ChangesBelow(const TTableText* reference, const TTableText* target,
                         const std::vector<TStayingTable>& others);

}  // namespace velmora
