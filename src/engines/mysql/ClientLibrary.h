#pragma once

#include <memory>

#include "engines/mysql/MyConnection.h"

namespace velmora {

// A MySQL server by way of the MariaDB client library. Its errors are EMySqlException with the library's text; once
// one says that the connection is lost, this is not connected and in no transaction. Nothing connects anew by itself.
//
// A query whose rows come in blocks keeps the rest of them when another statement needs the connection, so any number
// of queries may be open side by side. It is cut off by a disconnect: going on behind the rows that it has raises.
class TLibraryConnection final : public TMyConnection {
 public:
  TLibraryConnection();
  ~TLibraryConnection() override;

  bool GetConnected() const override;
  bool InTransaction() const override;
  std::optional<bool> TransactionOpen(bool refresh) override;
  void StartTransaction() override;  // raises for an unknown IsolationLevel
  void Commit() override;
  void Rollback() override;
  std::unique_ptr<TMyQuery> NewQuery() override;
  std::unique_ptr<TMyConnection> NewConnection() const override;

 private:
  class TLink;
  class TQuery;
  class TStoredRows;
  class TBlockRows;

  void DoConnect() override;
  void DoDisconnect() override;
  void Run(const char* statement);

  std::unique_ptr<TLink> link_;
};

}  // namespace velmora
