// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/ConnectionNotes.h"

#include "engines/mysql/DBConnMySQL.h"
#include "mysqlclient/MyClients.h"
#include "persist/MyOptionKeys.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kBySocket[] = "%s: reached by the socket %s";

std::unique_ptr<TMyConnection> NewConnection(const TEngineClients& clients, const TEngineValues& values) {
  return clients.NewMyConnection ? clients.NewMyConnection(values) : MakeMyConnection(MyOptionsOf(values));
}

}  // namespace

TEngineClients TConnectionNotes::Watched(const TEngineClients& clients, std::shared_ptr<TWaiting> waiting) const {
  TEngineClients watched = clients;
  watched.NewMyConnection = [clients, said = said_, waiting = std::move(waiting)](const TEngineValues& values) {
    auto connection = NewConnection(clients, values);
    connection->Waiting = waiting;
    const TMyConnection* key = connection.get();
    said->erase(key);  // another one may have stood at this address
    connection->Notice = [said, key](const std::string& text) { (*said)[key] = text; };
    return connection;
  };
  return watched;
}

TStringList TConnectionNotes::Of(const TTaskConnections& pair) const {
  TStringList lines = OfSide("Reference", pair.reference.get());
  for (std::string& line : OfSide("Target", pair.target.get())) lines.push_back(std::move(line));
  return lines;
}

TStringList TConnectionNotes::OfSide(const char* side, TDBConn* conn) const {
  TStringList lines;
  auto* server = dynamic_cast<TDBConnMySQL*>(conn);
  if (server == nullptr) return lines;
  const TMyConnection& connection = server->GetConnectionObject();
  if (const auto said = said_->find(&connection); said != said_->end())
    lines.push_back(Format("%s: %s", side, said->second));
  const std::string at = connection.ReachedAt();
  if (at.starts_with('/') && connection.Options.Socket.empty()) lines.push_back(Format(kBySocket, side, at));
  return lines;
}

}  // namespace velmora
