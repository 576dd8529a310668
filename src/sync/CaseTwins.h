// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/DBConn.h"
#include "util/Lists.h"

namespace velmora {

// A line for each table of the reference whose name the target has with other cases of letters alone, and for each such
// column of tables that both sides have and hold read. Nothing is fetched. Which of them count as one is the dialect's
// affair and, with tables, the server's; whoever compares should know of them, but of tables for which case is known
// not to count.
TStringList CaseTwins(TDBConn& reference, TDBConn& target, bool case_counts = true);

}  // namespace velmora
