// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "core/DBConn.h"
#include "mysqltext/ServerVersion.h"

namespace velmora {

// Of the server that a connected MySQL engine stands on; nothing for a file of creation texts and for other engines.
// Raises what asking the server raises.
std::optional<TServerVersion> ServerVersionOf(TDBConn& conn);

}  // namespace velmora
