// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the options of the program mean to the dialect whose differences are ticked or not.

#include "app/Difference.h"
#include "persist/Options.h"

namespace velmora {

// Whether a difference that has just been found is ticked: what is obsolete as its kind's switch says, what stands
// beside tables as tables; another engine as "Allow table type change" says.
bool TickedAtFirst(const TDifference& difference, const TOptions& options);

}  // namespace velmora
