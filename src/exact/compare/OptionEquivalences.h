// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The comparison of table options.

#include <vector>

#include "exact/compare/Equivalences.h"
#include "mysqltext/TableText.h"

namespace velmora {

// Whether all options mean the same, which is counted in `use`.
bool SameOptions(const TTableText& a, const TTableText& b, TEquivalenceUse& use);
// The options in which `b` has to be changed to be as `a`: set to the value of `a`, or back to the server's own where
// `a` has none.
std::vector<TTableOption> OptionsToSet(const TTableText& a, const TTableText& b, const TEquivalenceUse& use);

}  // namespace velmora
