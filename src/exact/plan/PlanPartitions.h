// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How a table loses its partitioning and gets another one.

#include <vector>

#include "exact/plan/PlanClauses.h"

namespace velmora {

// The change of the table's partitioning; null for none.
const TChange* PartitionChange(const TTableWork& work);
// The changes that let go of columns by which the table is partitioned. Not every server looks at what its partitioning
// becomes in the same statement. A column that is dropped under partitioning that stays is refused, and nothing is
// done.
std::vector<const TChange*> PartitionsDisturbed(const TTableWork& work);
// Whether it is taken away in a statement before the others, for good or not.
bool RemovesPartitioning(const TTableWork& work);
// The end of the statement for everything else, or one of its own.
void SetPartitioning(const TTableWork& work, TTableAlters& alters);

}  // namespace velmora
