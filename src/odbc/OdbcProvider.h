// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The providers over ODBC (unixODBC's driver manager; interface: the published ODBC 3.8 reference). Narrow entry
// points throughout, texts are UTF-8: the wide ones convert by the process's locale and lose rows.

#include <memory>
#include <string>
#include <vector>

#include "core/Dataset.h"
#include "formats/port/Provider.h"

namespace velmora {

// MSDASQL: "Data Source" is a data source name of odbc.ini. Statements are adapted to the driver: [name] gets its
// identifier quote, a leading "select top n" becomes a bound on rows.
std::unique_ptr<TOLEDBProvider> NewOdbcProvider(const TInitString& properties);

// SQLOLEDB.1: SQL Server by the FreeTDS driver; statements go as they are.
std::unique_ptr<TOLEDBProvider> NewSQLServerProvider(const TInitString& properties);

// The data sources that the driver manager lists: SOURCES_NAME, SOURCES_PARSENAME, SOURCES_DESCRIPTION, SOURCES_TYPE.
std::unique_ptr<TDataset> OdbcDataSources();

}  // namespace velmora
