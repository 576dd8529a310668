// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/LiveDatabase.h"

#include "mysqlclient/MyClients.h"
#include "mysqlclient/mysqlUtil.h"
#include "util/Errors.h"

namespace velmora::testing {

std::unique_ptr<TMyConnection> ServerConnection(const TPrivateServer& server, const std::string& database) {
  TMyOptions options;
  options.Direct = TWithBothClients::direct_;
  auto connection = MakeMyConnection(options);
  connection->Options.Socket = server.Socket();
  connection->Port = server.Port();
  connection->Username = "root";
  connection->Database = database;
  return connection;
}

void Execute(TMyConnection& connection, const std::string& sql) {
  const std::unique_ptr<TMyQuery> query = connection.NewQuery();
  query->SQL = sql;
  query->Execute();
}

std::string Answer(TMyConnection& connection, const std::string& sql) {
  std::vector<TVariant> row;
  MySqlQueryRow(sql, connection, row);
  return row.empty() ? "" : VarToText(row.back());
}

TLiveDatabase::TLiveDatabase(const std::string& name, TPrivateServer& server)
    : server_(server), name_(name), connection_(ServerConnection(server)) {
  connection_->SetConnected(true);
  Run("drop database if exists `" + name_ + "`");
  Run("create database `" + name_ + "` character set utf8mb4");
  Run("use `" + name_ + "`");
  connection_->Database = name_;
}

TLiveDatabase::~TLiveDatabase() {
  try {
    connection_->SetConnected(true);  // a test may have lost it
    Run("drop database if exists `" + name_ + "`");
  } catch (const EVelmora&) {  // the server is gone, and the next user of the name replaces the database
  }
}

void TLiveDatabase::Run(const std::string& sql) { Execute(*connection_, sql); }

std::unique_ptr<TDBConnMySQL> TLiveDatabase::NewEngine(const std::string& user) const {
  return std::make_unique<TDBConnMySQL>(ServerConnection(server_), "", server_.Port(), name_, user, "");
}

}  // namespace velmora::testing
