// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "core/DBConn.h"

namespace velmora::testing {

// What an engine says of its source, as text: the store with all tables fetched (MetaDump.h), then for each table its
// fields, as in "fields of t: a string(5), b date", and a line per row; or "fault:" and what was raised.
std::string EngineText(TDBConn& conn);
// The rows that are left, a line each.
std::string RowLines(TDataset& rows);

}  // namespace velmora::testing
