// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/Providers.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "formats/dbf/DBaseFolder.h"
#include "formats/dbf/FoxProFolder.h"
#include "formats/mdb/MdbWriter.h"
#include "formats/port/AsideReader.h"
#include "formats/port/FileProvider.h"
#include "odbc/OdbcProvider.h"
#include "sandbox/OwnProcessReaders.h"
#include "sandbox/ProviderProcess.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoProvider[] = "No provider named \"%s\" is part of this program";
constexpr char kLeftOut[] = "This program was built without %s. Install the package %s and build it again.";
constexpr char kNoPath[] = "The connection names no file or folder";
constexpr char kDataSource[] = "Data Source";
constexpr char kCodePage[] = "Code Page";
constexpr std::string_view kMdbLibrary = "mdbtools";
constexpr std::string_view kMdbPackage = "mdbtools-dev";
constexpr std::string_view kExcelOptions = "Excel 8.0";

using TMaker = std::unique_ptr<TOLEDBProvider> (*)(const TInitString&);

std::string PathOf(const TInitString& properties) {
  std::string path = properties.Value(kDataSource);
  if (path.empty()) RaiseError(kNoPath);
  return path;
}

std::unique_ptr<TOLEDBProvider> NewDBase(const TInitString& properties) {
  return NewFileProvider([folder = PathOf(properties), code_page = properties.Value(kCodePage)] {
    return ReadAside([folder, code_page] { return OpenDBaseFolder(folder, code_page); });
  });
}

std::unique_ptr<TOLEDBProvider> NewFoxPro(const TInitString& properties) {
  return NewFileProvider([folder = PathOf(properties), code_page = properties.Value(kCodePage)] {
    return ReadAside([folder, code_page] { return OpenFoxProFolder(folder, code_page); });
  });
}

#ifdef VELMORA_MDB
std::unique_ptr<TOLEDBProvider> NewAccess(const TInitString& properties) {
  const std::string path = PathOf(properties);
  return NewFileProvider([path] { return OpenMdbFile(path); }, [path] { CreateMdbFile(path); });
}
#else
constexpr TMaker NewAccess = nullptr;
#endif

std::unique_ptr<TOLEDBProvider> NewExcel(const TInitString& properties) {
  // A list in the manner of the whole string: "Excel 8.0;HDR=Yes;IMEX=1".
  const std::string options = properties.Value("Extended Properties").substr(kExcelOptions.size());
  const TInitString parts(options.starts_with(';') ? options.substr(1) : options);
  const bool names = !SameText(parts.Value("HDR"), "No");
  return NewFileProvider([path = PathOf(properties), names, mixed_as_text = parts.Value("IMEX") == "1"] {
    return OpenExcelFile(path, names, mixed_as_text);
  });
}

#ifdef VELMORA_LOTUS
std::unique_ptr<TOLEDBProvider> NewLotus(const TInitString& properties) {
  return NewFileProvider([path = PathOf(properties)] { return OpenLotusFile(path); });
}
#else
constexpr TMaker NewLotus = nullptr;
#endif

#ifdef VELMORA_ODBC
// Drivers come from everywhere. What one may need and how long it may take are bounds against going astray.
constexpr TChildLimits kDriverLimits = {.silence = std::chrono::minutes(10), .memory = 8ULL << 30};

std::unique_ptr<TOLEDBProvider> NewOdbc(const TInitString& properties) {
  return ProvideInOwnProcess([properties] { return NewOdbcProvider(properties); },
                             "data source " + properties.Value(kDataSource), kDriverLimits);
}

std::unique_ptr<TOLEDBProvider> NewSQLServer(const TInitString& properties) {
  return ProvideInOwnProcess([properties] { return NewSQLServerProvider(properties); },
                             "SQL Server " + properties.Value(kDataSource), kDriverLimits);
}

constexpr auto ListOdbcSources = OdbcDataSources;
#else
constexpr std::unique_ptr<TDataset> (*ListOdbcSources)() = nullptr;
constexpr TMaker NewOdbc = nullptr;
constexpr TMaker NewSQLServer = nullptr;
#endif

struct TProviderRow {
  std::string_view provider;
  std::string_view options;      // what "Extended Properties" begins with
  std::string_view engine_type;  // "Jet OLEDB:Engine Type", where it decides
  TMaker make;                   // null: left out when the program was built
  std::string_view library;
  std::string_view package;
};

constexpr std::string_view kJet = "Microsoft.Jet.OLEDB.4.0";

// The first row that fits counts.
constexpr TProviderRow kProviders[] = {
    {"MSDASQL", "", "", NewOdbc, "unixODBC", "unixodbc-dev"},
    {"SQLOLEDB.1", "", "", NewSQLServer, "unixODBC", "unixodbc-dev"},
    {"VFPOLEDB.1", "", "", NewFoxPro, "", ""},
    {kJet, "dBASE", "", NewDBase, "", ""},
    {kJet, kExcelOptions, "", NewExcel, "", ""},
    {kJet, "", "66", NewLotus, "libwps", "libwps-dev"},
    {kJet, "", "", NewAccess, kMdbLibrary, kMdbPackage},
};

bool Fits(const TProviderRow& row, const TInitString& properties) {
  const std::string options = properties.Value("Extended Properties");
  return SameText(row.provider, properties.Value("Provider")) &&
         SameText(row.options, std::string_view(options).substr(0, row.options.size())) &&
         (row.engine_type.empty() || row.engine_type == properties.Value("Jet OLEDB:Engine Type"));
}

}  // namespace

std::unique_ptr<TOLEDBProvider> MakeOLEDBProvider(const TInitString& properties) {
  const auto* row = std::ranges::find_if(kProviders, [&](const TProviderRow& each) { return Fits(each, properties); });
  if (row == std::end(kProviders)) RaiseError(Format(kNoProvider, properties.Value("Provider")));
  if (row->make == nullptr) RaiseError(Format(kLeftOut, row->library, row->package));
  return row->make(properties);
}

std::string CodePageProperty(const std::string& code_page) {
  return code_page.empty() ? "" : Format(";%s=%s", kCodePage, InitValue(code_page));
}

std::function<std::unique_ptr<TDataset>()> ODBCSourcesLister() { return ListOdbcSources; }

}  // namespace velmora
