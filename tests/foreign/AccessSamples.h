// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Access files for tests: tables without rows, with what Access keeps of them.

#include <map>
#include <string>
#include <vector>

#include "formats/mdb/MdbFormat.h"
#include "util/Lists.h"

namespace velmora::testing {

using TAccessProperties = std::map<std::string, std::string>;

struct TAccessTable {
  std::string name;
  std::vector<TMdbColumn> columns;  // not yet placed
  std::vector<TMdbIndex> indexes{};
  // By column, of the table itself under the empty name; "yes" and "no" are truth values.
  std::map<std::string, TAccessProperties> properties{};
};

struct TAccessRelation {
  std::string name;
  std::string child;
  TStringList columns;
  std::string parent;
  TStringList parent_columns;
  unsigned bits = 0;
};

std::string AccessFile(const std::vector<TAccessTable>& tables, const std::vector<TAccessRelation>& relations);

}  // namespace velmora::testing
