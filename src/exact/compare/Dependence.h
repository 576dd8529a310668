#pragma once

// What changes of a table need of other tables.

#include <string>
#include <unordered_set>

#include "mysqltext/TableText.h"

namespace velmora {

// The table among `others` that a table refers to by a foreign key which changes, or whose columns change, from the one
// text to the other; empty for none. Null for a side without the table.
std::string ChangesBeside(const TTableText* reference, const TTableText* target,
                          const std::unordered_set<std::string>& others);

}  // namespace velmora
