// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/DBConn.h"
#include "engines/server/OraClient.h"

namespace velmora {

// The engine of one Oracle schema, that of the connected user. It reads the dictionary views and can create and drop
// tables; other changes of the structure stay in the store. Errors of the client pass through with the server's text.
// ParseDDL, ConstraintDescription and TruncateTable are not there.
class TDBConnOracle : public TDBConn {
 public:
  // `session` is the client, unconnected; it is handed the parameters whenever it connects. `authmode` is "Normal",
  // "SYSDBA", "SYSOPER" or empty; `direct` means without Oracle client software.
  TDBConnOracle(std::unique_ptr<TOraSession> session, std::string server, std::string username, std::string password,
                std::string authmode, bool direct);
  ~TDBConnOracle() override;

  const std::string& server() const { return server_; }  // the service
  const std::string& username() const { return username_; }
  const std::string& password() const { return password_; }
  const std::string& authmode() const { return authmode_; }
  bool direct() const { return direct_; }

  // --- Connection
  void SaveParams(const std::string& path, TXMLAccess& store) override;
  TOraSession& GetConnectionObject() override;
  void ApplyParams() override;  // raises "Invalid Oracle authentication mode!"
  void GetDisplayName(std::string& text) override;

  // --- Words of the dialect, rows, statements
  void DateTimeLiteral(TDateTime value, std::string& text) override;
  void AutoIncKeyword(std::string& text) override;
  bool SupportsChunks(const std::string& table) override;
  std::unique_ptr<TDataset> OpenTableDataChunk(const std::string& table, std::int64_t first,
                                               std::int64_t count) override;
  std::unique_ptr<TDataset> OpenQuery(const std::string& sql) override;
  int GetEngine() override;
  // A text with ";" is a script: it ends with its first error, what ran before that stays, and the result is 0.
  std::int64_t ExecSQL(const std::string& sql) override;
  void QuoteOpen(std::string& text) override;
  void QuoteClose(std::string& text) override;
  void GetColumnTypes(TColumnTypeInfoArray& table) override;

  // --- Names
  void ListDatabases(TStringList& list) override;  // none: a user has one schema
  void ListTables(TStringList& list) override;
  void NormalizeName(const std::string& name, std::string& normal) override;

  // --- Transactions, copies
  void StartTransaction() override;
  void Commit() override;
  void Rollback() override;
  bool InTransaction() override;
  // The copy of the store survives only when this engine is not connected; a connected one gives a connected clone
  // that holds table names.
  std::unique_ptr<TDBConn> Clone() override;

  // --- Structure to texts and back
  // Raises the two messages about constraints that "can not locate corresponding index!", and "Unhandled constraint
  // type: " with the letter. Defaults are not read. A primary key's constraint has its last column for its only field;
  // the whole list stands in its key.
  void FetchTableStructure(const std::string& table) override;
  void ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) override;
  void ParseColumnDescription(const std::string& text, TMetaColumn& column) override;  // does nothing
  void KeyDescription(const TMetaKey& key, bool detailed, std::string& text) override;

  // --- Changing the structure
  // Raises "To be created, table must have at least one column!".
  void CreateTable(const std::string& table, const TStringList& definitions) override;
  void DropTable(const std::string& table) override;  // purges one that lies in the recycle bin
  void SurrogateKeyColumn(const std::string& column, std::string& definition) override;  // does nothing

 private:
  std::unique_ptr<TOraQuery> OpenRows(const std::string& sql);
  // Of the current table; the texts of its three queries are in the source.
  void FetchColumns(const std::string& table);
  void FetchKeys(const std::string& table);
  void FetchConstraints(const std::string& table);
  void StartConstraint(TOraQuery& rows, const std::string& name);
  void MarkPrimaryKey(TOraQuery& rows, const std::string& constraint);
  void MarkUniqueKey(const std::string& constraint);

  std::unique_ptr<TOraSession> session_;
  TOraQuery query_;    // runs single statements
  TOraScript script_;  // runs texts of several
  std::string server_;
  std::string username_;
  std::string password_;
  std::string authmode_;
  bool direct_;
};

}  // namespace velmora
