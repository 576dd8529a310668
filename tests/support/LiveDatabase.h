#pragma once

#include <memory>
#include <string>

#include "engines/mysql/ClientLibrary.h"
#include "engines/mysql/DBConnMySQL.h"
#include "support/PrivateServer.h"

namespace velmora::testing {

// A connection object for the server, unconnected, with the parameters of its administrator.
std::unique_ptr<TLibraryConnection> ServerConnection(const TPrivateServer& server, const std::string& database = {});

void Execute(TMyConnection& connection, const std::string& sql);
// The last column of the first row, as text.
std::string Answer(TMyConnection& connection, const std::string& sql);

// An empty database on a server, dropped at the end.
class TLiveDatabase {
 public:
  explicit TLiveDatabase(const std::string& name = "live", TPrivateServer& server = TPrivateServer::Shared());
  ~TLiveDatabase();
  TLiveDatabase(const TLiveDatabase&) = delete;
  TLiveDatabase& operator=(const TLiveDatabase&) = delete;

  const std::string& Name() const { return name_; }
  TMyConnection& Connection() { return *connection_; }  // connected to the database, of root
  void Run(const std::string& sql);                     // a statement on it

  std::unique_ptr<TDBConnMySQL> NewEngine() const;  // of the database by the socket, unconnected

 private:
  TPrivateServer& server_;
  std::string name_;
  std::unique_ptr<TLibraryConnection> connection_;
};

}  // namespace velmora::testing
