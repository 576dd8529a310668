// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The questions that the SQL Server engine asks of the server's catalog. `name` is a table's name as it stands within
// a literal, so with its quotes doubled.

#include <string>

namespace velmora {

inline constexpr int kCatalogColumns = 16;  // of a key or a constraint

std::string ColumnsQuery(const std::string& name);
// One row per index: col1, col1_desc to col16, col16_desc.
std::string KeysQuery(const std::string& name);
// One row per constraint: loccol1 to loccol16 and fgncol1 to fgncol16 of a foreign key, col of the others.
std::string ConstraintsQuery(const std::string& name);

}  // namespace velmora
