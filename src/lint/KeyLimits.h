// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How long keys may be.

#include "lint/Rules.h"

namespace velmora {

void LookForLongKeys(TTableLook& at);

}  // namespace velmora
