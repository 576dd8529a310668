// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SideNames.h"

#include "app/ServerVersion.h"
#include "core/CreationTexts.h"
#include "core/Engines.h"
#include "engines/mysql/OfflineEngine.h"
#include "foreign/FactReaders.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/MySqlFacts.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNotComparable[] =
    "%s cannot be compared: a reference has to be a MySQL server or a file of creation texts that ends in .sql";
constexpr char kStandardOnly[] =
    "%s can be compared by the exact dialect alone: the standard one takes a MySQL server or a file that ends in .sql";
constexpr char kNoTarget[] = "%s cannot become the target: scripts change MySQL databases alone";
constexpr char kEmptyReference[] = "%s has no tables: made equal to it, the target would lose all of its own";

}  // namespace

std::string SocketOf(TDBConn& conn) {
  auto* server = dynamic_cast<TDBConnMySQL*>(&conn);
  if (server == nullptr || !server->GetConnectionObject().Options.Socket.empty()) return {};
  const std::string at = server->GetConnectionObject().ReachedAt();
  return at.starts_with('/') ? " (" + at + ")" : "";
}

std::string SideName(TDBConn& conn) {
  std::string shown;
  conn.GetDisplayName(shown);
  if (dynamic_cast<TDBConnMySQLOffline*>(&conn) != nullptr) return shown;
  if (const auto* server = dynamic_cast<TDBConnMySQL*>(&conn)) {
    const std::string host = server->server().empty() ? "localhost" : server->server();
    const bool usual = server->port() == kMySqlPort || server->port() == 0;
    const std::string port = usual ? std::string() : Format(":%d", server->port());
    return Format("database %s of server %s", server->database(), host + port) + SocketOf(conn);
  }
  std::string engine;
  StrEngine(conn.GetEngine(), engine);
  return engine + " database" + (shown.empty() ? shown : " " + shown);
}

std::string DatabaseName(TDBConn& conn) {
  std::string name;
  if (const auto* server = dynamic_cast<TDBConnMySQL*>(&conn)) name = server->database();
  if (name.empty()) conn.GetDisplayName(name);
  return name;
}

void CheckComparable(TDBConn& reference, bool maps_foreign) {
  if (dynamic_cast<TCreationTexts*>(&reference) != nullptr) return;
  if (maps_foreign && HasFactReader(reference)) return;
  try {
    reference.ApplyParams();  // some know their name only then
  } catch (const EAbstractError&) {
  }
  RaiseError(Format(HasFactReader(reference) ? kStandardOnly : kNotComparable, SideName(reference)));
}

std::string SwapObstacle(TDBConn& reference) {
  return reference.GetEngine() == kEngineMySQL ? std::string() : Format(kNoTarget, SideName(reference));
}

// A version reads "8.0.36-0ubuntu1" or "10.11.4-MariaDB-1:10.11.4+maria~ubu2204".
std::string ServerText(TDBConn& conn) {
  try {
    if (const std::optional<TServerVersion> version = ServerVersionOf(conn)) return version->Text();
    std::string engine;
    StrEngine(conn.GetEngine(), engine);
    return engine;
  } catch (const EVelmora&) {  // what a server is called must not keep anybody from working with it
    return {};
  }
}

std::string EmptyReferenceText(TDBConn& reference) { return Format(kEmptyReference, SideName(reference)); }

}  // namespace velmora
