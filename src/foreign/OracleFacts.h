// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <span>

#include "core/DBConn.h"
#include "foreign/CatalogFacts.h"
#include "foreign/Facts.h"

namespace velmora {

// Of Oracle databases, from version 11: the tables of the user who is logged in.
std::unique_ptr<TFactReader> MakeOracleFacts(TDBConn& conn);

// What it asks, for servers that are played.
std::span<const TCatalogQuery> OracleQueries();

}  // namespace velmora
