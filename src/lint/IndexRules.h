// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Rules about the keys of a table.

#include "lint/Rules.h"

namespace velmora {

void LookForNoKey(TTableLook& at);
void LookForUniqueAsPrimary(TTableLook& at);
void LookForDuplicates(TTableLook& at);
void LookForRedundant(TTableLook& at);
void LookForNullableUnique(TTableLook& at);

}  // namespace velmora
