// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/DBConn.h"
#include "engines/server/IBOClient.h"

namespace velmora {

// The engine of an InterBase or Firebird database: a reference only, which reads columns and nothing else, no keys, no
// constraints, no defaults. Errors of the client pass through with its message.
class TDBConnInterbase : public TDBConn {
 public:
  // `client` is unconnected; it is handed the parameters whenever it connects.
  TDBConnInterbase(std::unique_ptr<TIBODatabase> client, std::string server, std::string database, std::string username,
                   std::string password);

  const std::string& server() const { return server_; }      // empty means a file of this machine, or its own server
  const std::string& database() const { return database_; }  // path or alias
  const std::string& username() const { return username_; }
  const std::string& password() const { return password_; }

  // --- Connection
  void Connect() override;
  void Disconnect() override;
  void SaveParams(const std::string& path, TXMLAccess& store) override;
  bool GetConnected() override;
  void GetDisplayName(std::string& text) override;  // the database as it was given

  // --- Rows, statements
  std::unique_ptr<TDataset> OpenQuery(const std::string& sql) override;
  int GetEngine() override;
  std::int64_t ExecSQL(const std::string& sql) override;  // gives the rows affected
  void GetColumnTypes(TColumnTypeInfoArray& table) override;

  // --- Names
  void ListDatabases(TStringList& list) override;  // knows of none
  void ListTables(TStringList& list) override;     // without views and system tables

  // --- Transactions, copies: those of the client's default transaction
  void StartTransaction() override;
  void Commit() override;
  void Rollback() override;
  bool InTransaction() override;
  // The copy of the store survives only when this engine is not connected; a connected one gives a connected clone
  // that holds table names.
  std::unique_ptr<TDBConn> Clone() override;

  // --- Structure to texts and back
  void FetchTableStructure(const std::string& table) override;
  // Detailed: built on the record's description; a default is never written.
  void ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) override;
  void ParseColumnDescription(const std::string& text, TMetaColumn& column) override;  // does nothing

  // --- Changing the structure
  void DropTable(const std::string& table) override;
  void DropColumn(const std::string& table, const std::string& column) override;
  // The store alone changes; there is nothing of these on a server that this engine reads.
  void DropKey(const std::string& table, const std::string& key) override;
  void DropConstraint(const std::string& table, const std::string& constraint) override;
  void SurrogateKeyColumn(const std::string& column, std::string& definition) override;  // does nothing

 private:
  void SetClientParams();
  void AppendColumn(const TDataset& row);

  std::unique_ptr<TIBODatabase> client_;
  std::unique_ptr<TIBOQuery> query_;  // runs ExecSQL
  std::string server_;
  std::string database_;
  std::string username_;
  std::string password_;
};

}  // namespace velmora
