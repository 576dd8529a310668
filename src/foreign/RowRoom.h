// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What columns take of the room that a row has.

#include "foreign/TargetServer.h"
#include "mysqltext/ColumnType.h"

namespace velmora {

// Bytes that a column of this type takes in a row at most; what is kept outside counts little.
long long RowBytes(const TColumnText& column);
// The same in a page of InnoDB, where long values stand in pages of their own.
long long PageBytes(const TColumnText& column, const TTargetServer& server);

}  // namespace velmora
