// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Which provider of this program serves which initialisation string.

#include <functional>
#include <memory>

#include "formats/port/Provider.h"

namespace velmora {

// By "Provider", for Jet also by "Extended Properties" and "Jet OLEDB:Engine Type":
//   MSDASQL, SQLOLEDB.1                   ODBC (unixODBC; SQL Server by the FreeTDS driver)
//   Microsoft.Jet.OLEDB.4.0               Access; "dBASE IV": a folder of dBASE files; "Excel 8.0...": an Excel file;
//                                         engine type 66: a Lotus 1-2-3 file
//   VFPOLEDB.1                            a folder or database of FoxPro
// Raises an error that names the provider when there is no such one; for one that was left out when the program was
// built, also the package that has what it needs.
std::unique_ptr<TOLEDBProvider> MakeOLEDBProvider(const TInitString& properties);

// What a connection string for files of dBASE or FoxPro has more where their code page is stated; empty where it is
// not.
std::string CodePageProperty(const std::string& code_page);

// What lists the ODBC data sources of this machine (see OdbcDataSources); empty when that was left out of the program.
std::function<std::unique_ptr<TDataset>()> ODBCSourcesLister();

}  // namespace velmora
