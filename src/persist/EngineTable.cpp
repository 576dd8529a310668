// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/EngineTable.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "engines/file/DBConnParadox.h"
#include "engines/file/DBConnTextDelim.h"
#include "engines/file/DBConnTextFixed.h"
#include "engines/mysql/DBConnMySQL.h"
#include "engines/mysql/DBConnMySQLscript.h"
#include "engines/oledb/DBConnAccess.h"
#include "engines/oledb/DBConnDBF.h"
#include "engines/oledb/DBConnExcel.h"
#include "engines/oledb/DBConnFoxPro.h"
#include "engines/oledb/DBConnLotus.h"
#include "engines/oledb/DBConnODBC.h"
#include "engines/oledb/DBConnSQLServer.h"
#include "engines/oledb/Providers.h"
#include "engines/server/ClientFirebird.h"
#include "engines/server/ClientOracle.h"
#include "engines/server/DBConnInterbase.h"
#include "engines/server/DBConnOracle.h"
#include "mysqlclient/MyClients.h"
#include "persist/MachineValues.h"
#include "persist/MyOptionKeys.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kFolderKey[] = "folder";
constexpr char kFilenameKey[] = "filename";
constexpr char kDsnKey[] = "dsn";
constexpr TEngineKey kFolder[] = {{kFolderKey}};
constexpr TEngineKey kCodePage[] = {{"codepage"}};  // of files of dBASE and FoxPro, where they do not say it
constexpr TEngineKey kFilename[] = {{kFilenameKey}};
constexpr TEngineKey kDsn[] = {{kDsnKey}};
constexpr TEngineKey kInterbase[] = {{"server"}, {"database"}, {"username"}, {"password", EKeyKind::Secret}};
// The name says a file, but it travels as the password of the database.
constexpr TEngineKey kSysDb = {"sysdb_filename", EKeyKind::Secret};
constexpr TEngineKey kAccess[] = {{"filename"}, {"password", EKeyKind::Secret}, kSysDb};
constexpr TEngineKey kSQLServer[] = {{"server"},
                                     {"database"},
                                     {"username"},
                                     {"password", EKeyKind::Secret},
                                     {"windows_authentication", EKeyKind::Boolean, "N"}};
// Port 0 stands for none: a local server is then reached by its socket where it has one.
constexpr TEngineKey kMySQL[] = {
    {"server"}, {"database"}, {"username"}, {"password", EKeyKind::Secret}, {"port", EKeyKind::Port, "0"}};
constexpr TEngineKey kOracle[] = {{"server"},
                                  {"username"},
                                  {"password", EKeyKind::Secret},
                                  {"authmode", EKeyKind::Text, "Normal"},
                                  {"direct", EKeyKind::Boolean, "N"}};
// See HasFixedColumns.
constexpr TEngineKey kText[] = {{"folder"}, {"HDR", EKeyKind::Boolean, "N"}, {"separator", EKeyKind::Text, "\t"}};
constexpr TEngineKey kExcel[] = {{"filename"}, {"HDR", EKeyKind::Boolean, "N"}, {"IMEX", EKeyKind::Boolean, "Y"}};

std::unique_ptr<TDBConn> MakeMySQL(const TEngineValues& values, const TEngineClients& clients) {
  const int port = values.Integer("port");
  auto connection = clients.NewMyConnection ? clients.NewMyConnection(values) : MakeMyConnection(MyOptionsOf(values));
  return std::make_unique<TDBConnMySQL>(std::move(connection), values.Text("server"), port, values.Text("database"),
                                        values.Text("username"), values.Text("password"));
}

// What the client has been told beyond the engine's own keys; nothing where that is the standard.
void WriteMySQL(TDBConn& conn, const std::string& path, TXMLAccess& store) {
  conn.SaveParams(path, store);
  const auto* client = dynamic_cast<TMyConnection*>(&conn.GetConnectionObject());
  if (client == nullptr) return;
  const TEngineValues values = ValuesOfMyOptions(client->Options);
  for (const TEngineKey& key : kMyEngineKeys)
    if (values.Has(key.name)) store.xmlSetVal(Format("%s/%s", path, key.name), values.Text(key.name));
}

std::unique_ptr<TDBConn> MakeMySQLScript(const TEngineValues& values, const TEngineClients& /*clients*/) {
  return std::make_unique<TDBConnMySQLscript>(values.Text("filename"));
}

std::unique_ptr<TDBConn> MakeInterbase(const TEngineValues& values, const TEngineClients& /*clients*/) {
  return std::make_unique<TDBConnInterbase>(NewFirebirdDatabase(), values.Text("server"), values.Text("database"),
                                            values.Text("username"), values.Text("password"));
}

std::unique_ptr<TDBConn> MakeParadox(const TEngineValues& values, const TEngineClients& /*clients*/) {
  return std::make_unique<TDBConnParadox>(values.Text("folder"));
}

std::unique_ptr<TDBConn> MakeText(const TEngineValues& values, const TEngineClients& /*clients*/) {
  const std::string folder = values.Text("folder");
  const bool hdr = values.Boolean("HDR");
  if (HasFixedColumns(values)) return std::make_unique<TDBConnTextFixed>(folder, hdr);
  return std::make_unique<TDBConnTextDelim>(folder, values.Text("separator"), hdr);
}

// Columns of fixed width have no writer of their own, and are known by their empty separator.
void WriteText(TDBConn& conn, const std::string& path, TXMLAccess& store) {
  const auto* fixed = dynamic_cast<TDBConnTextFixed*>(&conn);
  if (fixed == nullptr) return conn.SaveParams(path, store);
  store.xmlSetVal(path + "/folder", fixed->folder());
  store.xmlSetBool(path + "/HDR", fixed->hdr());
  store.xmlSetVal(path + "/separator", "");
}

// The home of this machine's Oracle client; empty where none is known.
std::string OracleHome() {
  try {
    return ReadRegStringHKLM(kOracleHome);
  } catch (const EVelmora&) {
    return {};
  }
}

std::unique_ptr<TDBConn> MakeOracle(const TEngineValues& values, const TEngineClients& /*clients*/) {
  return std::make_unique<TDBConnOracle>(std::make_unique<TOraLibrarySession>(OracleHome()), values.Text("server"),
                                         values.Text("username"), values.Text("password"), values.Text("authmode"),
                                         values.Boolean("direct"));
}

TOLEDBProviderMaker ProvidersOf(const TEngineClients& clients) {
  return clients.NewOLEDBProvider ? clients.NewOLEDBProvider : MakeOLEDBProvider;
}

// An engine whose one parameter is the text of the key.
template <class Conn, const char* key>
std::unique_ptr<TDBConn> MakeOLEDB(const TEngineValues& values, const TEngineClients& clients) {
  return std::make_unique<Conn>(values.Text(key), ProvidersOf(clients));
}

template <class Conn>
std::unique_ptr<TDBConn> MakeDbf(const TEngineValues& values, const TEngineClients& clients) {
  return std::make_unique<Conn>(values.Text(kFolderKey), values.Text("codepage"), ProvidersOf(clients));
}

std::unique_ptr<TDBConn> MakeAccess(const TEngineValues& values, const TEngineClients& clients) {
  return std::make_unique<TDBConnAccess>(values.Text("filename"), values.Text("password"),
                                         values.Text("sysdb_filename"), ProvidersOf(clients));
}

std::unique_ptr<TDBConn> MakeSQLServer(const TEngineValues& values, const TEngineClients& clients) {
  return std::make_unique<TDBConnSQLServer>(values.Text("server"), values.Text("database"), values.Text("username"),
                                            values.Text("password"), values.Boolean("windows_authentication"),
                                            ProvidersOf(clients));
}

std::unique_ptr<TDBConn> MakeExcel(const TEngineValues& values, const TEngineClients& clients) {
  return std::make_unique<TDBConnExcel>(values.Text("filename"), values.Boolean("HDR"), values.Boolean("IMEX"),
                                        ProvidersOf(clients));
}

void SaveByEngine(TDBConn& conn, const std::string& path, TXMLAccess& store) { conn.SaveParams(path, store); }

// Deliberate: task files take no Lotus 1-2-3 in either direction, and the script engine only as far as its missing
// name lets it come.
constexpr TEngineRow kEngines[] = {
    {.engine = kEngineDBF,
     .keys = kFolder,
     .further = kCodePage,
     .reference = true,
     .target = false,
     .make = MakeDbf<TDBConnDBF>,
     .write = SaveByEngine},
    {.engine = kEngineLotus,
     .keys = kFilename,
     .reference = false,
     .target = false,
     .make = MakeOLEDB<TDBConnLotus, kFilenameKey>,
     .write = SaveByEngine},
    {.engine = kEngineInterbase,
     .keys = kInterbase,
     .reference = true,
     .target = false,
     .make = MakeInterbase,
     .write = SaveByEngine},
    {.engine = kEngineAccess,
     .keys = kAccess,
     .reference = true,
     .target = true,
     .make = MakeAccess,
     .write = SaveByEngine},
    {.engine = kEngineSQLServer,
     .keys = kSQLServer,
     .reference = true,
     .target = true,
     .make = MakeSQLServer,
     .write = SaveByEngine},
    {.engine = kEngineMySQL,
     .keys = kMySQL,
     .further = kMyEngineKeys,
     .reference = true,
     .target = true,
     .make = MakeMySQL,
     .write = WriteMySQL},
    {.engine = kEngineMySQLScript,
     .keys = kFilename,
     .reference = true,
     .target = false,
     .make = MakeMySQLScript,
     .write = SaveByEngine},
    {.engine = kEngineOracle,
     .keys = kOracle,
     .reference = true,
     .target = true,
     .make = MakeOracle,
     .write = SaveByEngine},
    {.engine = kEngineParadox,
     .keys = kFolder,
     .reference = true,
     .target = false,
     .make = MakeParadox,
     .write = SaveByEngine},
    {.engine = kEngineText,
     .keys = kText,
     .reference = true,
     .target = false,
     .read_first = "separator",
     .make = MakeText,
     .write = WriteText},
    {.engine = kEngineExcel,
     .keys = kExcel,
     .reference = true,
     .target = false,
     .make = MakeExcel,
     .write = SaveByEngine},
    {.engine = kEngineFoxPro,
     .keys = kFolder,
     .further = kCodePage,
     .reference = true,
     .target = false,
     .make = MakeDbf<TDBConnFoxPro>,
     .write = SaveByEngine},
    {.engine = kEngineODBC,
     .keys = kDsn,
     .reference = true,
     .target = false,
     .make = MakeOLEDB<TDBConnODBC, kDsnKey>,
     .write = SaveByEngine},
};

}  // namespace

std::string TEngineValues::Text(std::string_view key) const {
  const auto found = values_.find(key);
  return found == values_.end() ? std::string() : found->second;
}

int TEngineValues::Integer(std::string_view key) const { return StrToInt(Text(key)); }

const TEngineKey* TEngineRow::FindKey(std::string_view name) const {
  for (const std::span<const TEngineKey> list : {keys, further}) {
    const auto found = std::ranges::find_if(list, [&](const TEngineKey& key) { return SameText(key.name, name); });
    if (found != list.end()) return &*found;
  }
  return nullptr;
}

const TEngineKey* TEngineRow::SecretKey() const {
  const auto found = std::ranges::find(keys, EKeyKind::Secret, &TEngineKey::kind);
  return found == keys.end() ? nullptr : &*found;
}

bool HasFixedColumns(const TEngineValues& values) {
  return values.Text("separator").empty() && !values.Boolean(kDelimited);
}

std::span<const TEngineRow> EngineTable() { return kEngines; }

const TEngineRow* FindEngine(int engine) {
  const auto* row = std::ranges::find(kEngines, engine, &TEngineRow::engine);
  return row == std::end(kEngines) ? nullptr : row;
}

const TEngineRow* FindEngine(std::string_view name) {
  if (name.empty()) return nullptr;
  const auto* row = std::ranges::find_if(
      kEngines, [&](const TEngineRow& candidate) { return SameText(EngineName(candidate), name); });
  return row == std::end(kEngines) ? nullptr : row;
}

std::string EngineName(const TEngineRow& row) {
  std::string name;
  if (row.engine != kEngineMySQLScript) StrEngine(row.engine, name);
  return name;
}

void FillStandardValues(const TEngineRow& row, TEngineValues& values) {
  for (const TEngineKey& key : row.keys)
    if (!values.Has(key.name)) values.Set(key.name, std::string(key.standard));
}

std::unique_ptr<TDBConn> MakeEngine(const TEngineRow& row, const TEngineValues& values, const TEngineClients& clients) {
  return row.make(values, clients);
}

}  // namespace velmora
