// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Rules about foreign keys, and what they refer to.

#include "lint/Rules.h"

namespace velmora {

void LookForMissingParents(TTableLook& at);
void LookForOtherTypes(TTableLook& at);
void LookForMissingIndexes(TTableLook& at);
void LookForNotUnique(TTableLook& at);
void LookForSameForeignKeys(TTableLook& at);

}  // namespace velmora
