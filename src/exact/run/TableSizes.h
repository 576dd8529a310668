// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How large tables are, as far as their server knows without counting.

#include <cstdint>
#include <map>
#include <string>

#include "core/DBConn.h"
#include "util/Lists.h"

namespace velmora {

struct TTableSize {
  std::int64_t rows = 0;   // about
  std::int64_t bytes = 0;  // of rows and keys

  std::string Text() const;  // "about 1200000 rows, 2.1 GB"
};
using TTableSizes = std::map<std::string, TTableSize>;  // by name in lower case

// Asks for what it knows now, of all with one statement; tables of which the server says nothing are left out. Raises
// what the server says.
TTableSizes AskTableSizes(TDBConn& server, const TStringList& tables);

}  // namespace velmora
