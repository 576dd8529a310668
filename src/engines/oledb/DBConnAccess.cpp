// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/DBConnAccess.h"

#include <filesystem>
#include <utility>

#include "engines/oledb/AccessTypes.h"
#include "formats/port/InitString.h"
#include "util/Dates.h"
#include "util/Format.h"
#include "util/Text.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kJet[] = "Microsoft.Jet.OLEDB.4.0";
constexpr char kConnection[] = "Provider=%s;User ID=Admin;Password=%s;Data Source=%s;%s";
constexpr char kDatabasePassword[] = "Jet OLEDB:Database Password=%s;";
constexpr char kMade[] = "%s was made, empty";
constexpr char kJet4[] = "5";  // the engine type of a new file

constexpr std::int64_t kLongestText = 255;  // a longer one is a memo
constexpr std::int64_t kMemoSize = 4294967295;

}  // namespace

TDBConnAccess::TDBConnAccess(std::string filename, std::string password, std::string sysdb_filename,
                             TOLEDBProviderMaker maker)
    : TDBConnOLEDB(std::move(maker)),
      filename_(std::move(filename)),
      password_(std::move(password)),
      sysdb_filename_(std::move(sysdb_filename)) {
  allow_data = false;
}

// --- Connection

void TDBConnAccess::Connect() {
  std::error_code error;
  if (!std::filesystem::exists(filename_, error)) {
    TOLEDBDataSource& source = GetConnectionObject();
    source.SetProviderName(kJet);
    source.SetProperty("Data Source", filename_);
    source.SetProperty("Jet OLEDB:Engine Type", kJet4);
    source.CreateDataSource();
    Warn(Format(kMade, filename_));
  }
  TDBConnOLEDB::Connect();
}

void TDBConnAccess::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/filename", filename_);
  store.xmlSetVal(path + "/password", password_);
  store.xmlSetVal(path + "/sysdb_filename", sysdb_filename_);
}

void TDBConnAccess::ApplyParams() {
  const std::string extra = sysdb_filename_.empty() ? "" : Format(kDatabasePassword, InitValue(sysdb_filename_));
  GetConnectionObject().SetInitializationString(
      Format(kConnection, kJet, InitValue(password_), InitValue(filename_), extra));
}

// --- Words of the dialect, rows, statements

void TDBConnAccess::DateTimeLiteral(TDateTime value, std::string& text) { text = "#" + DateTimeText(value) + "#"; }

bool TDBConnAccess::SupportsChunks(const std::string& table) { return HasKeyOfOneColumn(table); }

std::unique_ptr<TDataset> TDBConnAccess::OpenTableDataChunk(const std::string& table, std::int64_t first,
                                                            std::int64_t count) {
  const std::string key = ChunkKey(table, "TDBConnAccess");
  if (first == 1) return OpenQuery(Format("select top %d * from %s", count, QuoteName(table)));
  return OpenQuery(ChunkAfter(table, key, first, count));
}

int TDBConnAccess::GetEngine() { return kEngineAccess; }

void TDBConnAccess::GetColumnTypes(TColumnTypeInfoArray& table) { table = AccessColumnTypes(); }

// --- Copies

std::unique_ptr<TDBConn> TDBConnAccess::Clone() {
  return ConnectedAsThis(std::make_unique<TDBConnAccess>(filename_, sysdb_filename_, password_, maker()));
}

// --- Structure to texts and back

// Deliberate: brackets at both ends of a default go, whether they belong together or not.
void TDBConnAccess::ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) {
  std::string whole;
  TDBConn::ColumnDescription(column, detailed, whole);  // NOLINT(bugprone-parent-virtual-call): the plain words
  if (detailed) {
    if (column.notnull) whole += " not null";
    if (column.autoinc) whole += " identity";
    std::string value = column.default_;
    while (value.size() > 1 && value.front() == '(' && value.back() == ')') value = value.substr(1, value.size() - 2);
    if (LowerText(value) == "getdate()") value = "now()";
    if (!no_defaults && !value.empty()) whole += " default " + value;
  }
  text = std::move(whole);
}

void TDBConnAccess::ConvertColumn(const TMetaColumn& source, TMetaColumn& column) {
  TMetaColumn fitted = source;
  const bool text = source.datatype == ntVarChar || source.datatype == ntNVarChar;
  if ((text && source.size > kLongestText) || source.datatype == ntNTextMsSql) {
    fitted.datatype = ntText;
    fitted.size = kMemoSize;
  }
  TDBConnOLEDB::ConvertColumn(fitted, column);
}

}  // namespace velmora
