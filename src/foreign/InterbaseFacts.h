// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "core/DBConn.h"
#include "foreign/Facts.h"

namespace velmora {

// Of databases of Firebird and InterBase: columns with their domains resolved, identities and generators, keys,
// references, checks, comments, out of the system tables.
std::unique_ptr<TFactReader> MakeInterbaseFacts(TDBConn& conn);

}  // namespace velmora
