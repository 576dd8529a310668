// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "core/DBConn.h"
#include "foreign/Facts.h"

namespace velmora {

// Of ODBC data sources: what their drivers say in the catalog calls for columns, keys, references and indexes. What a
// driver has no call for is not known.
std::unique_ptr<TFactReader> MakeOdbcFacts(TDBConn& conn);

}  // namespace velmora
