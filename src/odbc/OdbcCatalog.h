// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The schema rowsets out of the catalog calls of ODBC. What a driver does not offer gives no rows; drivers that answer
// more than they were asked for are held to the current catalog and the table.

#include <string>
#include <vector>

#include "formats/port/Provider.h"
#include "odbc/OdbcHandles.h"
#include "util/Lists.h"

namespace velmora {

TStringList OdbcCatalogs(const TOdbcConnection& connection);
std::vector<TOLEDBTableRow> OdbcTables(const TOdbcConnection& connection);
// Looks at the table's columns by a query without rows too, for those that are unsigned.
std::vector<TOLEDBColumnRow> OdbcColumns(const TOdbcConnection& connection, const std::string& table);
std::vector<TOLEDBIndexRow> OdbcIndexes(const TOdbcConnection& connection, const std::string& table);
// The same calls' rows as they are: TOLEDBProvider::CatalogRows.
TOLEDBRowset OdbcCatalogRows(const TOdbcConnection& connection, ECatalogRows kind, const std::string& table);

}  // namespace velmora
