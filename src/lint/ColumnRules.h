// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Rules about single columns, and about a table's engine.

#include "lint/Rules.h"

namespace velmora {

void LookForZeroDates(TTableLook& at);
void LookForFullCounters(TTableLook& at);
void LookForNoTransactions(TTableLook& at);

}  // namespace velmora
