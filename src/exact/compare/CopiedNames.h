// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Names of foreign keys and checks with underscores in front that are not the user's: tools that change a large table
// by a copy have to give the copy's constraints other names, as a database has each of them once.

#include <memory>

#include "exact/compare/Equivalences.h"
#include "mysqltext/TableText.h"

namespace velmora {

// The target with the reference's names where a foreign key or a check is the reference's but for such underscores, and
// where a key has the name of such a foreign key; null where there is none. What is renamed is counted in `use`.
std::unique_ptr<const TTableText> WithoutCopiedNames(const TTableText& reference, const TTableText& target,
                                                     TEquivalenceUse& use);

}  // namespace velmora
