// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/ColumnTypes.h"

namespace velmora {

// The type table of SQL Server: without "date" and "time", which are written as "datetime".
TColumnTypeInfoArray SQLServerColumnTypes();

}  // namespace velmora
