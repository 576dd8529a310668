// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "engines/mysql/DBConnMySQL.h"
#include "mysqlclient/MyConnection.h"
#include "support/PrivateServer.h"

namespace velmora::testing {

// A connection object for the server, unconnected, with the parameters of its administrator, of the client that is
// tested: our own unless a test says otherwise.
std::unique_ptr<TMyConnection> ServerConnection(const TPrivateServer& server, const std::string& database = {});

void Execute(TMyConnection& connection, const std::string& sql);
// The last column of the first row, as text.
std::string Answer(TMyConnection& connection, const std::string& sql);

// A test that runs with our own client and with the client library.
class TWithBothClients : public ::testing::TestWithParam<bool> {
 protected:
  TWithBothClients() { direct_ = GetParam(); }
  ~TWithBothClients() override { direct_ = true; }

 private:
  friend std::unique_ptr<TMyConnection> ServerConnection(const TPrivateServer& server, const std::string& database);
  static inline bool direct_ = true;
};

inline std::string ClientName(const ::testing::TestParamInfo<bool>& client) {
  return client.param ? "native" : "library";
}

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

  std::unique_ptr<TDBConnMySQL> NewEngine(const std::string& user = "root") const;  // by the socket, unconnected

 private:
  TPrivateServer& server_;
  std::string name_;
  std::unique_ptr<TMyConnection> connection_;
};

}  // namespace velmora::testing
