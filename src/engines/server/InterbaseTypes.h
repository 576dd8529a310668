// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/ColumnTypes.h"

namespace velmora {

// The type table of InterBase and Firebird: the words of the system tables, and those of their SQL as aliases. Words
// outside it, such as BOOLEAN or QUAD, are refused when read.
TColumnTypeInfoArray InterbaseColumnTypes();

}  // namespace velmora
