// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/ColumnTypes.h"

namespace velmora {

// The type table of the Oracle dialect. Words outside it, such as "TIMESTAMP(6)", are refused when read.
TColumnTypeInfoArray OracleColumnTypes();

}  // namespace velmora
