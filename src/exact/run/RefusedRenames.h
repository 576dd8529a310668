// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Renames that a server refuses though nothing is wrong with them.

#include <cstdint>
#include <string>

#include "core/DBConn.h"

namespace velmora {

// Executes a statement, and gives its rows. MariaDB (10.11) refuses to rename a column of which checks or other columns
// are computed once for each time that it holds the table open for a view that reads a computed column: such a
// statement has changed nothing, and is sent again.
std::int64_t ExecuteChange(TDBConn& conn, const std::string& statement);

}  // namespace velmora
