// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Expressions of a script beside those that a server has printed.

#include "mysqltext/TableText.h"

namespace velmora {

// Expressions of `table` that say what those in the same places of `counterpart` say get their texts. Raises for two of
// which nobody knows whether they say the same.
void AdoptExpressions(TTableText& table, const TTableText& counterpart);

}  // namespace velmora
