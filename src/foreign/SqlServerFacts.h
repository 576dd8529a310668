// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <span>

#include "core/DBConn.h"
#include "foreign/CatalogFacts.h"
#include "foreign/Facts.h"

namespace velmora {

// Of SQL Server databases, from version 2008: all schemas, of which "dbo" is not part of a table's name.
std::unique_ptr<TFactReader> MakeSqlServerFacts(TDBConn& conn);

// What it asks, for servers that are played.
std::span<const TCatalogQuery> SqlServerQueries();

}  // namespace velmora
