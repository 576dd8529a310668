// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakeMyConnection.h"

#include <utility>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora::testing {

namespace {

class TFakeMyQuery : public TMyQuery {
 public:
  TFakeMyQuery(TFakeMyConnection& connection, TFakeMyServer& server) : TMyQuery(connection), server_(server) {}

 private:
  std::unique_ptr<TDataset> DoOpen() override {
    const bool blocks = UniDirectional && !FetchAll;
    server_.log.push_back((blocks ? Format("open in %d ", FetchRows) : std::string("open ")) + SQL);
    CheckConnected();
    const auto found = server_.answers.find(SQL);
    if (found == server_.answers.end()) RaiseError("No answer to " + SQL);
    if (!found->second.error.empty()) RaiseError(found->second.error);
    auto rows = std::make_unique<TMemDataset>(found->second.fields);
    for (const TMemDataset::TRow& row : found->second.rows) rows->AddRow(row);
    return rows;
  }

  std::int64_t DoExecute() override {
    server_.log.push_back("exec " + SQL);
    CheckConnected();
    const auto found = server_.answers.find(SQL);
    if (found != server_.answers.end() && !found->second.error.empty()) RaiseError(found->second.error);
    return server_.rows_affected;
  }

  void CheckConnected() const {
    if (!Connection().GetConnected()) RaiseError("Not connected");
  }

  TFakeMyServer& server_;
};

}  // namespace

std::string TFakeMyConnection::ServerVersion() {
  const auto said = server_->answers.find("select version()");
  return said == server_->answers.end() ? std::string() : VarToText(said->second.rows.at(0).at(0));
}

void TFakeMyServer::AddTable(const std::string& name, const std::string& ddl) {
  TAnswer& creation = answers["show create table `" + name + "`"];
  if (creation.fields.empty()) {
    TAnswer& list = answers["show tables"];
    list.fields = {TFieldDef{"Tables_in_db"}};
    list.rows.push_back({name});
  }
  creation.fields = {TFieldDef{"Table"}, TFieldDef{"Create Table"}};
  creation.rows = {{name, ddl}};
}

void TFakeMyServer::AddColumn(const std::string& sql, const TStringList& values) {
  TAnswer& answer = answers[sql];
  answer.fields = {TFieldDef{"value"}};
  answer.rows.clear();
  for (const std::string& value : values) answer.rows.push_back({value});
}

TStringList TFakeMyServer::TakeLog() { return std::exchange(log, {}); }

TFakeMyConnection::~TFakeMyConnection() {
  if (connected_) server_->log.push_back("disconnect");
}

std::unique_ptr<TMyQuery> TFakeMyConnection::NewQuery() { return std::make_unique<TFakeMyQuery>(*this, *server_); }

std::unique_ptr<TMyConnection> TFakeMyConnection::NewConnection() const {
  auto connection = std::make_unique<TFakeMyConnection>(server_);
  connection->CopyOptions(*this);
  return connection;
}

void TFakeMyConnection::ExpectStatements(const TStringList& statements, bool /*at_once*/) {
  for (const std::string& statement : statements) server_->log.push_back("expect " + statement);
}

void TFakeMyConnection::DoConnect() {
  server_->log.push_back(Format("connect %s:%d %s %s %s", Server, Port, Database, Username, Password));
  if (!server_->connect_error.empty()) RaiseError(server_->connect_error);
  connected_ = true;
}

void TFakeMyConnection::DoDisconnect() {
  server_->log.push_back("disconnect");
  connected_ = false;
}

void TFakeMyConnection::SetInTransaction(bool on, const char* word) {
  server_->log.push_back(word);
  in_transaction_ = on;
}

}  // namespace velmora::testing
