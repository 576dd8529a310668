// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engines/oledb/DBConnOLEDB.h"
#include "engines/oledb/Providers.h"

namespace velmora {

// The engine of one SQL Server database. It reads the structure from the server's catalog, and so knows constraints,
// the direction of key columns and identity columns.
class TDBConnSQLServer : public TDBConnOLEDB {
 public:
  TDBConnSQLServer(std::string server, std::string database, std::string username, std::string password,
                   bool windows_authentication, TOLEDBProviderMaker maker = MakeOLEDBProvider);

  const std::string& server() const { return server_; }  // empty: this machine's
  const std::string& database() const { return database_; }
  const std::string& username() const { return username_; }  // this and the password: unless windows_authentication
  const std::string& password() const { return password_; }
  bool windows_authentication() const { return windows_authentication_; }

  // --- Connection
  void SaveParams(const std::string& path, TXMLAccess& store) override;
  void ApplyParams() override;
  void GetDisplayName(std::string& text) override;

  // --- Words of the dialect, rows, statements
  bool SupportsChunks(const std::string& table) override;  // for a primary key of one column
  std::unique_ptr<TDataset> OpenTableDataChunk(const std::string& table, std::int64_t first,
                                               std::int64_t count) override;
  int GetEngine() override;
  void GetColumnTypes(TColumnTypeInfoArray& table) override;
  void FieldValParam(const TField& field, std::string& text) override;  // raises "Date/time value out of range"

  // --- Copies
  std::unique_ptr<TDBConn> Clone() override;

  // --- Structure to texts and back
  void FetchTableStructure(const std::string& table) override;  // raises "Unknown constraint type"
  void ParseColumnDescription(const std::string& text, TMetaColumn& column) override;  // does nothing

  // --- Changing the structure
  // Values may be loaded into an identity column between these two.
  void BeforeDataLoad(const std::string& table) override;
  void AfterDataLoad(const std::string& table) override;
  void RenameTable(const std::string& old_name, const std::string& new_name) override;
  void RenameColumn(const std::string& table, const std::string& old_name, const std::string& new_name) override;
  void SurrogateKeyColumn(const std::string& column, std::string& definition) override;

 private:
  // Of the current table.
  void FetchColumns(const std::string& name);
  void FetchKeys(const std::string& name);
  void FetchConstraints(const std::string& name);
  void StoreConstraint(const TDataset& row);
  void StoreConstraintField(const std::string& local, const std::string& foreign);
  void SetIdentityInsert(const std::string& table, const char* state);

  std::string server_;
  std::string database_;
  std::string username_;
  std::string password_;
  bool windows_authentication_;
};

}  // namespace velmora
