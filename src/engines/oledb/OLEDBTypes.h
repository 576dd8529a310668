// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/ColumnTypes.h"

namespace velmora {

// The type table that the OLE DB engines share: words of Transact-SQL, without unsigned ones.
TColumnTypeInfoArray OLEDBColumnTypes();

}  // namespace velmora
