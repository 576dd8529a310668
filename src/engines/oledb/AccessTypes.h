// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/ColumnTypes.h"

namespace velmora {

// The type table of Access: characters end at 255, and there is no "bigint", which is written as "float".
TColumnTypeInfoArray AccessColumnTypes();

}  // namespace velmora
