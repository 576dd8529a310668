// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What MySQL refuses of tables that MariaDB takes, though it has all the parts.

#include "mysqltext/TableText.h"
#include "util/Lists.h"

namespace velmora {

// Each with its place: "what is computed of a counter (column c)".
TStringList BeyondMySql(const TTableText& table);

}  // namespace velmora
