// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/CreationTexts.h"
#include "core/DBConn.h"
#include "engines/mysql/TextReaders.h"
#include "mysqlclient/MyConnection.h"

namespace velmora {

// The engine of a MySQL database, the only one that can be a target. It asks the server for each table's own creation
// text and reads that into the store by ParseDDL. Errors of the client pass through with the server's message.
class TDBConnMySQL : public TDBConn, public TCreationTexts {
 public:
  // `connection` is the client, unconnected; it is handed the parameters whenever it connects.
  TDBConnMySQL(std::unique_ptr<TMyConnection> connection, std::string server, int port, std::string database,
               std::string username, std::string password);

  std::string table_type = "InnoDB";  // of created tables; foreign key checks are switched for "InnoDB" alone

  const std::string& server() const { return server_; }  // empty means the local server
  int port() const { return port_; }                     // 0: none is given
  const std::string& database() const { return database_; }
  std::string TextsDatabase() const override { return database_; }
  const std::string& username() const { return username_; }
  const std::string& password() const { return password_; }

  // --- Connection
  void Connect() override;
  void Disconnect() override;
  void SaveParams(const std::string& path, TXMLAccess& store) override;
  TMyConnection& GetConnectionObject() override;
  void ApplyParams() override;
  void GetDisplayName(std::string& text) override;  // "host.database", the port in between unless it is the usual one
  // Of a connected engine: goes on with another database of the server, in the same session. The store is emptied.
  // After an error the engine is of that database all the same, and the session may still be in the former one.
  void UseDatabase(const std::string& database);

  // --- Words of the dialect, rows, statements
  void DateTimeLiteral(TDateTime value, std::string& text) override;
  void AutoIncKeyword(std::string& text) override;
  bool SupportsChunks(const std::string& table) override;
  std::unique_ptr<TDataset> OpenTableDataChunk(const std::string& table, std::int64_t first,
                                               std::int64_t count) override;
  std::unique_ptr<TDataset> OpenQuery(const std::string& sql) override;
  int GetEngine() override;
  void ParseDDL(const std::string& sql) override;
  std::int64_t ExecSQL(const std::string& sql) override;  // gives the rows affected
  void QuoteOpen(std::string& text) override;
  void QuoteClose(std::string& text) override;
  void GetColumnTypes(TColumnTypeInfoArray& table) override;
  void EscapeString(const std::string& text, std::string& escaped) override;

  // --- Names
  void ListDatabases(TStringList& list) override;  // leaves the connection closed
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
  // Leaves the table as a new last row of the store with `cached_ddl` "N/A"; foreign keys of tables fetched earlier
  // that refer to it are gone from the store.
  void FetchTableStructure(const std::string& table) override;
  void ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) override;
  void ParseColumnDescription(const std::string& text, TMetaColumn& column) override;
  void ConstraintDescription(const TMetaConstraint& constraint, bool detailed, std::string& text) override;
  void ConvertColumn(const TMetaColumn& source, TMetaColumn& column) override;

  // --- Changing the structure
  bool CanCreateTables() override;
  void BeforeDataLoad(const std::string& table) override;
  void AfterDataLoad(const std::string& table) override;
  // Raises "Table must have at least one column!". The store holds table names only afterwards. Should the statement
  // fail, foreign key checks stay off on the connection; the same holds for DropTable.
  void CreateTable(const std::string& table, const TStringList& definitions) override;
  void DropTable(const std::string& table) override;
  void RenameTable(const std::string& old_name, const std::string& new_name) override;
  void TruncateTable(const std::string& table) override;
  void AddColumn(const std::string& table, const std::string& definition) override;
  void DropColumn(const std::string& table, const std::string& column) override;
  void RenameColumn(const std::string& table, const std::string& old_name, const std::string& new_name) override;
  void ModifyColumn(const std::string& table, const std::string& old_name, const std::string& new_name,
                    const std::string& definition) override;
  // The store alone changes: nothing goes to the server, and the next fetch brings key or constraint back.
  void DropKey(const std::string& table, const std::string& key) override;
  void DropConstraint(const std::string& table, const std::string& constraint) override;
  void SurrogateKeyColumn(const std::string& column, std::string& definition) override;
  bool SupportsSurrogateKey() override;

  // --- Creation texts
  void ShowCreateTable(const std::string& table, std::string& ddl) override;
  // From here on, until an empty list or a statement that changes something, a text that was read once is not asked
  // for again: a comparison reads most texts of changed tables several times.
  void ExpectCreationTexts(const TStringList& tables) override;
  void PrepareExactTexts(bool exact = true) override;
  std::vector<TOtherObject> OtherObjects() override;
  void ReadObjectTexts(std::vector<TOtherObject>& objects) override;
  TStringList KindsHidden() override;
  std::string ServerVersion() override { return connection_->ServerVersion(); }

 protected:
  // An unconnected engine with the same parameters and an empty store, for Clone.
  virtual std::unique_ptr<TDBConnMySQL> NewEngine() const;

 private:
  void ForgetTexts();
  void SetUpExactSession();
  void SetParams(TMyConnection& connection) const;
  std::unique_ptr<TMyConnection> ExactConnection() const;
  std::string ShowCreateStatement(const std::string& table);
  const std::vector<TOtherObject>& ListKinds();
  void ReadObject(TOtherObject& object);
  void ShowObject(TOtherObject& object);
  std::string TextWithOrdinals(const TOtherObject& view);
  void ReadInOwnCollation(TOtherObject& view);

  std::unique_ptr<TMyConnection> connection_;
  TTextReaders text_readers_;
  bool exact_texts_ = false;
  std::vector<TOtherObject> listed_;  // by the last list in exact texts; no kind: a table
  bool keeps_texts_ = false;
  std::unordered_map<std::string, std::string> kept_texts_;  // of fetched tables, whose row in the store lost them
  std::unique_ptr<TMyQuery> query_;                          // runs ExecSQL
  std::string server_;
  std::string database_;
  std::string username_;
  std::string password_;
  int port_;
};

}  // namespace velmora
