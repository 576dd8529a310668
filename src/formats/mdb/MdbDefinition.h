// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Definitions of tables, as Jet database files hold them.

#include <cstdint>
#include <string>
#include <vector>

#include "formats/mdb/MdbFormat.h"
#include "formats/mdb/MdbPages.h"

namespace velmora {

struct TMdbTable {
  std::vector<TMdbColumn> columns;  // placed
  std::vector<TMdbIndex> indexes;   // without their entries
  std::vector<TMdbRow> rows;
  bool system = false;
  std::uint32_t last_autonumber = 0;
};

// Pointers to the rows that map pages: those that belong to the table, those with room, two for each long column.
struct TMdbMaps {
  std::uint32_t used = 0;
  std::uint32_t free = 0;
  std::vector<std::uint32_t> of_long_columns;
};

bool IsLong(const TMdbColumn& column);  // whether its values may stand outside of the row

// What stands on the pages of a definition after their heads.
std::string MdbDefinition(const TMdbLayout& layout, const TMdbTable& table, const TMdbMaps& maps);

}  // namespace velmora
