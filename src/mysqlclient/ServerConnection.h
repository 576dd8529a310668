// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>

#include "mysqlclient/MyConnection.h"
#include "mysqlclient/MyWire.h"

namespace velmora {

// A connection to a MySQL server, whatever the backend. Errors are EMySqlException with the text of server or backend;
// once one says that the connection is lost, this is not connected and in no transaction. Nothing connects anew by
// itself.
//
// A query whose rows come in blocks keeps the rest of them when another statement needs the connection, so any number
// of queries may be open side by side. It is cut off by a disconnect: going on after the rows that it has raises. One
// that is closed before its last row ends the connection, and does not wait for a rest that nobody wants.
//
// A server may be silent for Options.ReadTimeout in a login and in answers to TMyQuery::Open; Execute and the ends of
// transactions may take any time. A statement can be broken off from the first transaction on: the server is asked then
// who it is, and a statement of that number on any other one is left alone.
//
// With Waiting set all that waits for the server is done on a thread of the connection's own. What is kept of rows
// stays with the thread that asks; while it waits nothing else may be asked of this connection.
class TServerConnection : public TMyConnection {
 public:
  ~TServerConnection() override;

  bool GetConnected() const override;
  bool InTransaction() const override;
  std::string ReachedAt() const override;
  std::string ServerVersion() override;
  std::optional<bool> TransactionOpen(bool refresh) override;
  std::size_t WarningCount() const override;
  void StartTransaction() override;  // raises for an unknown IsolationLevel
  void Commit() override;
  void Rollback() override;
  std::unique_ptr<TMyQuery> NewQuery() override;
  std::unique_ptr<TMyConnection> NewConnection() const override;
  void PrepareToCancel() override;
  void CancelRunning() override;
  void Sever() override;
  void ExpectStatements(const TStringList& statements, bool at_once = false) override;

 protected:
  TServerConnection();

 private:
  class TGrip;
  class TLink;
  class TQuery;
  class TStoredRows;
  class TBlockRows;

  virtual std::unique_ptr<TMyWire> NewWire() const = 0;
  virtual std::unique_ptr<TServerConnection> NewOfThisKind() const = 0;

  void DoConnect() override;
  void DoDisconnect() override;
  void Run(const char* statement);

  std::unique_ptr<TLink> link_;
};

}  // namespace velmora
