#include "app/Sources.h"

#include "app/SourceText.h"
#include "engines/mysql/ClientLibrary.h"
#include "engines/mysql/DBConnMySQL.h"
#include "engines/mysql/OfflineEngine.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::string_view kScriptExtension = ".sql";

bool EndsIn(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && SameText(text.substr(text.size() - end.size()), end);
}

std::unique_ptr<TDBConn> MakeServer(TServerAddress address, const TSourceSettings& settings) {
  if (address.password) {
    if (settings.Warn && !address.password->empty())
      settings.Warn(
          "a password in an argument is seen by every user of this machine: leave it out to be asked for it, "
          "or use a password file");
  } else if (settings.AskPassword) {
    address.password = settings.AskPassword(address.username + "@" +
                                            Iif<std::string>(address.server.empty(), "localhost", address.server));
  }
  auto connection = std::make_unique<TLibraryConnection>();
  connection->Options = settings.Client;
  return std::make_unique<TDBConnMySQL>(std::move(connection), address.server, address.port, address.database,
                                        address.username, address.password.value_or(""));
}

// Takes the value of a key out, so that what is left over is known to be unknown.
std::optional<std::string> Take(TEngineSource& source, const std::string& key) {
  const auto found = source.values.find(key);
  if (found == source.values.end()) return std::nullopt;
  std::string value = found->second;
  source.values.erase(found);
  return value;
}

std::unique_ptr<TDBConn> MakeByKeys(TEngineSource source, const TSourceSettings& settings) {
  std::string name;
  StrEngine(source.engine, name);
  if (source.engine != kEngineMySQL) RaiseError(Format("Unhandled engine: %s cannot be read by this version", name));
  TServerAddress address;
  address.server = Take(source, "server").value_or("");
  address.database = Take(source, "database").value_or("");
  address.username = Take(source, "username").value_or("");
  address.password = Take(source, "password");
  if (const auto port = Take(source, "port")) address.port = ParsePort(*port);
  if (!source.values.empty())
    RaiseError(Format("\"%s\" is no key of %s: it has server, database, username, password and port",
                      source.values.begin()->first, name));
  return MakeServer(std::move(address), settings);
}

}  // namespace

std::unique_ptr<TDBConn> MakeSource(const std::string& source, const TSourceSettings& settings) {
  if (SameText(std::string_view(source).substr(0, kServerScheme.size()), kServerScheme))
    return MakeServer(ParseServerAddress(source), settings);
  if (std::optional<TEngineSource> by_keys = ParseEngineSource(source))
    return MakeByKeys(std::move(*by_keys), settings);
  if (EndsIn(source, kScriptExtension)) return std::make_unique<TDBConnMySQLOffline>(source);
  RaiseError(Format(
      "\"%s\" is no source: give a file that ends in .sql, mysql://USER@HOST/DATABASE, or ENGINE:key=value", source));
}

std::unique_ptr<TDBConn> MakeTarget(const std::string& source, const TSourceSettings& settings) {
  std::unique_ptr<TDBConn> target = MakeSource(source, settings);
  if (target->GetEngine() != kEngineMySQL) {
    std::string name;
    StrEngine(target->GetEngine(), name);
    RaiseError(Format("%s cannot be a target: give a MySQL server or a file that ends in .sql", name));
  }
  return target;
}

}  // namespace velmora
