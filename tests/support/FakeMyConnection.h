// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A MySQL server played from a table of answers; it writes down what it is asked.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "mysqlclient/MyConnection.h"

namespace velmora::testing {

struct TFakeMyServer {
  struct TAnswer {
    std::vector<TFieldDef> fields;
    std::vector<TMemDataset::TRow> rows;
    std::string error;  // raised instead, unless empty
  };

  std::map<std::string, TAnswer> answers;  // by statement; what is not there can be executed, but not opened
  std::int64_t rows_affected = 0;
  std::string connect_error;
  // "connect SERVER:PORT DATABASE USERNAME PASSWORD", "disconnect", "open SQL" ("open in 25 SQL" for rows that come in
  // blocks), "exec SQL", "hint TABLE", "start", "commit", "rollback".
  TStringList log;

  // Adds or replaces a table in what "show tables" and "show create table" answer.
  void AddTable(const std::string& name, const std::string& ddl);
  void AddColumn(const std::string& sql, const TStringList& values);  // an answer of one column
  void Fail(const std::string& sql, const std::string& error) { answers[sql].error = error; }
  TStringList TakeLog();  // what was written since the last call
};

class TFakeMyConnection : public TMyConnection {
 public:
  explicit TFakeMyConnection(std::shared_ptr<TFakeMyServer> server) : server_(std::move(server)) {}
  ~TFakeMyConnection() override;

  bool GetConnected() const override { return connected_; }
  bool InTransaction() const override { return in_transaction_; }
  void StartTransaction() override { SetInTransaction(true, "start"); }
  void Commit() override { SetInTransaction(false, "commit"); }
  void Rollback() override { SetInTransaction(false, "rollback"); }
  std::unique_ptr<TMyQuery> NewQuery() override;
  std::unique_ptr<TMyConnection> NewConnection() const override;
  void ExpectStatements(const TStringList& statements, bool at_once = false) override;
  // As its greeting has said it, so that nobody has to ask: the answer to "select version()", if there is one.
  std::string ServerVersion() override;

 private:
  void DoConnect() override;
  void DoDisconnect() override;
  void SetInTransaction(bool on, const char* word);

  std::shared_ptr<TFakeMyServer> server_;
  bool connected_ = false;
  bool in_transaction_ = false;
};

}  // namespace velmora::testing
