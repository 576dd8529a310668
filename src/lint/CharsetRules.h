// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Rules about character sets and collations.

#include "lint/Rules.h"

namespace velmora {

void LookForOtherCharset(TTableLook& at);
void LookForOtherCollation(TTableLook& at);
void LookForColumnCharsets(TTableLook& at);
void LookForShortUtf8(TTableLook& at);

}  // namespace velmora
