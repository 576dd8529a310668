// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Sources.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>

#include "app/SourceText.h"
#include "engines/mysql/DBConnMySQL.h"
#include "engines/mysql/OfflineEngine.h"
#include "mysqlclient/MyClients.h"
#include "mysqlclient/MyWire.h"
#include "mysqltext/ScriptFolder.h"
#include "persist/EngineTable.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/MySqlFacts.h"
#include "util/Text.h"

namespace velmora {

TEngineClients ClientsOf(const TSourceSettings& settings) {
  TEngineClients clients;
  std::shared_ptr<TLatePassword> late;
  if (settings.PasswordRefused) late = std::make_shared<TLatePassword>(settings.PasswordRefused);
  const auto notice = [warn = settings.Warn,
                       told = std::make_shared<std::set<std::string>>()](const std::string& text) {
    if (warn && told->insert(text).second) warn(text);
  };
  clients.NewMyConnection = [options = settings.Client, given = settings.Given, late,
                             notice](const TEngineValues& own) {
    auto connection = MakeMyConnection(MyOptionsOf(own, options, given));
    connection->LatePassword = late;
    connection->Notice = notice;
    return connection;
  };
  return clients;
}

namespace {

constexpr std::string_view kScriptExtension = ".sql";
constexpr char kNoParameters[] =
    "The address of a server has no parameters after a \"?\": they are options of their own (a \"?\" in a name is "
    "written %3F)";
constexpr char kSocketUnused[] =
    "--socket is for a server of this machine: %s is reached by TCP, where a port or another host is given";
constexpr char kPasswordGiven[] =
    "a password in an argument is seen by every user of this machine: leave it out to be asked for it, or use a "
    "password file";

bool EndsIn(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && SameText(text.substr(text.size() - end.size()), end);
}

// The account that a password is asked for, as in "user@host".
std::string AccountOf(const TEngineValues& values) {
  const std::string server = values.Text("server");
  return values.Text("username") + "@" + (server.empty() ? "localhost" : server);
}

// Whether a password belongs to these values: that of an account on a server, which the machine's own login has not.
bool HasAccount(const TEngineRow& engine, const TEngineValues& values) {
  return engine.FindKey("username") != nullptr && !values.Boolean("windows_authentication");
}

// An account that no port leads elsewhere is reached by the socket, if one is known, as other clients do it.
bool BySocket(const TEngineValues& values, const TSourceSettings& settings) {
  const auto port = settings.Defaults.find("port");
  const bool known = settings.Defaults.contains("socket") || settings.Given.contains("socket") || values.Has("socket");
  const bool usual = port == settings.Defaults.end() || port->second == Format("%d", kMySqlPort);
  return IsLocalServer(values.Text("server")) && (known || usual);
}

// What the source leaves out is as the option file says.
void FillDefaults(TEngineValues& values, const TSourceSettings& settings) {
  const auto left_out = [&](const std::string& key) {
    return key == "password" ? !values.Has(key) : InList(values.Text(key), {"", "0"});
  };
  const auto fill = [&](const std::string& key) {
    if (const auto found = settings.Defaults.find(key); found != settings.Defaults.end() && left_out(key))
      values.Set(key, found->second);
  };
  for (const char* key : {"server", "username", "password", "tls", "tls_ca", "tls_cert", "tls_key"}) fill(key);
  fill(left_out("port") && BySocket(values, settings) ? "socket" : "port");
}

// The engine of values that were given as an argument. Asks for a password that is not among them, and warns of one
// that is.
std::unique_ptr<TDBConn> MakeGiven(const TEngineRow& engine, TEngineValues values, const TSourceSettings& settings) {
  const TEngineKey* secret = engine.SecretKey();
  if (secret != nullptr) {
    const bool given = values.Has(secret->name);
    if (given && !settings.OfFile && !values.Text(secret->name).empty() && settings.Warn) settings.Warn(kPasswordGiven);
    if (engine.engine == kEngineMySQL) FillDefaults(values, settings);
    if (!values.Has(secret->name) && HasAccount(engine, values) && settings.AskPassword)
      values.Set(secret->name, settings.AskPassword(AccountOf(values)));
  }
  FillStandardValues(engine, values);
  return MakeEngine(engine, values, ClientsOf(settings));
}

std::unique_ptr<TDBConn> MakeServer(const std::string& source, const TSourceSettings& settings) {
  const std::size_t account_end = source.rfind('@');
  if (source.find('?', account_end == std::string::npos ? 0 : account_end) != std::string::npos)
    RaiseError(kNoParameters);
  const TServerAddress address = ParseServerAddress(source, !settings.Defaults.contains("username"));
  TEngineValues values;
  values.Set("server", address.server);
  values.Set("port", Format("%d", address.port));
  values.Set("database", address.database);
  values.Set("username", address.username);
  if (address.password) values.Set("password", *address.password);
  return MakeGiven(*FindEngine(kEngineMySQL), std::move(values), settings);
}

std::string KeysOf(const TEngineRow& engine) {
  TStringList names;
  for (const TEngineKey& key : engine.keys) names.emplace_back(key.name);
  for (const TEngineKey& key : engine.further) names.emplace_back(key.name);
  return JoinList(names, ", ");
}

// A name that is none may be the rest of a password.
std::string ShownKey(const std::string& name, const TEngineSource& source) {
  const bool plain = std::ranges::all_of(name, [](char c) { return (c >= 'a' && c <= 'z') || c == '_'; }) &&
                     std::ranges::find(source.doubtful, name) == source.doubtful.end();
  return plain ? " \"" + name + "\"" : " of the name given";
}

std::unique_ptr<TDBConn> MakeByKeys(const TEngineSource& source, const TSourceSettings& settings) {
  TEngineValues values;
  for (const auto& [name, value] : source.values) {
    const TEngineKey* key = source.engine->FindKey(name);
    if (key == nullptr)
      RaiseError(Format("%s has no key%s; its keys are: %s (a \";\" in a value is written %%3B)",
                        EngineName(*source.engine), ShownKey(name, source), KeysOf(*source.engine)));
    if (key->kind == EKeyKind::Port) ParsePort(value);
    values.Set(key->name, value);
  }
  return MakeGiven(*source.engine, std::move(values), settings);
}

// How a file whose name ends so is given; %s stands for the file, or for the folder that holds it.
struct TFileForm {
  std::string_view ending, form;
  bool by_folder;
};
constexpr TFileForm kFileForms[] = {
    {".mdb", "Access:filename=%s", false},
    {".accdb", "Access:filename=%s", false},
    {".xls", "Excel:filename=%s;HDR=Y", false},
    {".xlsx", "Excel:filename=%s;HDR=Y", false},
    {".xlsm", "Excel:filename=%s;HDR=Y", false},
    {".wk1", "Lotus 1-2-3:filename=%s", false},
    {".wk3", "Lotus 1-2-3:filename=%s", false},
    {".wk4", "Lotus 1-2-3:filename=%s", false},
    {".123", "Lotus 1-2-3:filename=%s", false},
    {".fdb", "Interbase/Firebird:server=;database=%s;username=USER", false},
    {".gdb", "Interbase/Firebird:server=;database=%s;username=USER", false},
    {".dbf", "DBF:folder=%s", true},
    {".dbc", "FoxPro:folder=%s", true},
    {".db", "Paradox:folder=%s", true},
    {".csv", "Text:folder=%s;HDR=Y;separator=,", true},
    {".txt",
     "a file of MySQL creation texts whose name ends in .sql, or text with a table per file as "
     "Text:folder=%s;HDR=Y;separator=,",
     true},
    {".vlt", "the only source: a task file stands for reference and target", false},
};
constexpr char kFolderForm[] =
    "a folder that holds files that end in .sql, Paradox:folder=%s, DBF:folder=%s, FoxPro:folder=%s or "
    "Text:folder=%s;HDR=Y;separator=,";

std::string KeyValue(const std::filesystem::path& path) {
  return StrReplace(StrReplace(path.empty() ? "." : path.string(), "%", "%25"), ";", "%3B");
}

// What to give instead of a file or a folder that is no source by itself; empty where that cannot be told.
std::string FileHint(const std::string& source) {
  const std::filesystem::path path = source;
  std::error_code none;
  if (std::filesystem::is_directory(path, none)) {
    const std::string folder = KeyValue(path);
    return Format(kFolderForm, folder, folder, folder, folder);
  }
  const auto* row =
      std::ranges::find_if(kFileForms, [&](const TFileForm& form) { return EndsIn(source, form.ending); });
  if (row != std::end(kFileForms)) return Format(row->form, KeyValue(row->by_folder ? path.parent_path() : path));
  return std::filesystem::exists(path, none) ? "a file of MySQL creation texts, whose name has to end in .sql" : "";
}

[[noreturn]] void RaiseNoSource(const std::string& source) {
  const std::string shown = ShownSource(source);
  if (const std::string hint = shown == source ? FileHint(source) : std::string(); !hint.empty())
    RaiseError(Format("\"%s\" is no source by itself: give %s", shown, hint));
  RaiseError(Format(
      "\"%s\" is no source: give a file that ends in .sql, mysql://USER@HOST/DATABASE, or ENGINE:key=value", shown));
}

}  // namespace

namespace {

bool IsScript(const std::string& path) {
  return path == kStandardInput || EndsIn(path, kScriptExtension) || IsScriptFolder(path);
}

// FILE.sql, standard input, a folder of such files, or any of these with #DATABASE behind it. Null for what is neither.
std::unique_ptr<TDBConn> MakeScript(const std::string& source, const TSourceSettings& settings) {
  TScriptChoice choice{{}, settings.AllowIncomplete};
  if (IsScript(source)) return std::make_unique<TDBConnMySQLOffline>(source, choice);
  const std::size_t mark = source.rfind('#');
  if (mark == std::string::npos || !IsScript(source.substr(0, mark))) return nullptr;
  choice.database = source.substr(mark + 1);
  return std::make_unique<TDBConnMySQLOffline>(source.substr(0, mark), choice);
}

}  // namespace

std::unique_ptr<TDBConn> MakeSource(const std::string& source, const TSourceSettings& settings) {
  if (SameText(std::string_view(source).substr(0, kServerScheme.size()), kServerScheme))
    return MakeServer(source, settings);
  if (const std::optional<TEngineSource> by_keys = ParseEngineSource(source)) return MakeByKeys(*by_keys, settings);
  if (std::unique_ptr<TDBConn> script = MakeScript(source, settings)) return script;
  RaiseNoSource(source);
}

namespace {

// The client of a server for which a socket is set; null for others.
TDBConnMySQL* WithSocket(TDBConn& source) {
  auto* server = dynamic_cast<TDBConnMySQL*>(&source);
  return server == nullptr || server->GetConnectionObject().Options.Socket.empty() ? nullptr : server;
}

}  // namespace

bool ForgetSocketOfOthers(TDBConn& source, bool of_task) {
  TDBConnMySQL* server = WithSocket(source);
  if (server == nullptr) return false;
  const bool has_port = server->port() != 0 && !(of_task && server->port() == kMySqlPort);
  if (IsLocalServer(server->server()) && !has_port) return false;
  server->GetConnectionObject().Options.Socket.clear();
  return true;
}

void SettleSocket(std::initializer_list<TDBConn*> sources, bool of_task) {
  std::string by_tcp;
  bool taken = false;
  for (TDBConn* source : sources) {
    if (source == nullptr || WithSocket(*source) == nullptr) continue;
    if (!ForgetSocketOfOthers(*source, of_task))
      taken = true;
    else if (by_tcp.empty())
      source->GetDisplayName(by_tcp);
  }
  if (!taken && !by_tcp.empty()) RaiseError(Format(kSocketUnused, by_tcp));
}

void CheckTarget(TDBConn& target) {
  if (target.GetEngine() == kEngineMySQL) return;
  std::string name;
  StrEngine(target.GetEngine(), name);
  RaiseError(Format("%s cannot be a target: give a MySQL server or a file that ends in .sql", name));
}

std::unique_ptr<TDBConn> MakeTarget(const std::string& source, const TSourceSettings& settings) {
  std::unique_ptr<TDBConn> target = MakeSource(source, settings);
  CheckTarget(*target);
  return target;
}

}  // namespace velmora
