// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a table becomes on a server by its engine and its character set.

#include <string>
#include <vector>

#include "exact/compare/ServerForm.h"
#include "mysqltext/TableText.h"

namespace velmora {

// The engine and character set of `counterpart`, the other side's table, null for none, where the text names none, and
// all that hangs on these: types and defaults of columns, lengths of keys, foreign keys that the engine does not hold.
// Expressions that say the same get the other side's text. Raises for those of which nobody knows.
void CompleteTable(TTableText& table, const TTableText* counterpart, const TServerTraits& server);

// A column with another default, as it is written; without one where it is empty.
void SetColumnDefault(TElement& column, const std::string& value);

// A column as it is once its table, which was `before`, is converted to the set that `options` name. Raises where only
// the target knows what the column has had.
void ConvertColumn(TElement& column, const TTableText& before, const std::vector<TTableOption>& options);

}  // namespace velmora
