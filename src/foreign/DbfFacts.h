// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "core/DBConn.h"
#include "foreign/Facts.h"

namespace velmora {

// Of folders of dBASE files: fields with width and decimals, and the indexes that TABLE.INF lists.
std::unique_ptr<TFactReader> MakeDBaseFacts(TDBConn& conn);
// Of folders and databases of FoxPro: null flags, and by the database long names, defaults, keys.
std::unique_ptr<TFactReader> MakeFoxProFacts(TDBConn& conn);

}  // namespace velmora
