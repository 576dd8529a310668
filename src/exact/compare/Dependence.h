#pragma once

// What changes of a table need of other tables.

#include <string>
#include <unordered_set>
#include <vector>

#include "mysqltext/TableText.h"

namespace velmora {

// The table among `others`, which may not be as the reference has them, to which a table refers by a foreign key that
// changes, or whose columns do, from the one text to the other; empty for none. Null for a side without the table.
std::string ChangesBeside(const TTableText* reference, const TTableText* target,
                          const std::unordered_set<std::string>& others);

// The table among `others`, which stay as the target has them, that refers to a column or a key which changes from the
// one text to the other; empty for none.
std::string ChangesBelow(const TTableText* reference, const TTableText* target, const std::vector<TTableText>& others);

}  // namespace velmora
