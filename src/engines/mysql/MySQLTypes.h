// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/ColumnTypes.h"

namespace velmora {

// The type table of the MySQL dialect. Words outside it, such as "mediumint" or "enum", are refused when read.
TColumnTypeInfoArray MySQLColumnTypes();

}  // namespace velmora
