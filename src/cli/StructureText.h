// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <iosfwd>
#include <vector>

#include "app/StructureView.h"

namespace velmora {

// Tables for people: a head line each, then columns, keys and constraints, one per line.
void PrintTables(const std::vector<TTableView>& tables, std::ostream& out);

}  // namespace velmora
