// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "core/DBConn.h"
#include "engines/oledb/OLEDBClient.h"

namespace velmora {

// What the engines of OLE DB providers have in common: structure by the provider's schema rowsets, which tell of no
// foreign keys and no checks; values and DDL in the manner of Transact-SQL. A descendant gives the connection string
// (ApplyParams), its number, SaveParams and Clone. Errors of a provider pass through with its text.
// ParseDDL, OpenTableDataChunk and SurrogateKeyColumn are not there.
class TDBConnOLEDB : public TDBConn {
 public:
  ~TDBConnOLEDB() override;

  bool NationalTypes = true;  // wide texts of the provider become national types

  // What is to be known of the source beside its structure, since the last call.
  TStringList TakeWarnings();

  // --- Connection: the connection string is made anew each time it connects
  void Reconnect() override;  // Deliberate: the store stays as it is
  TOLEDBDataSource& GetConnectionObject() override;
  void GetDisplayName(std::string& text) override;  // the data source of the connection string

  // --- Words of the dialect, rows, statements
  void DateTimeLiteral(TDateTime value, std::string& text) override;
  void AutoIncKeyword(std::string& text) override;
  std::unique_ptr<TDataset> OpenQuery(const std::string& sql) override;
  std::int64_t ExecSQL(const std::string& sql) override;  // gives the rows affected
  void QuoteOpen(std::string& text) override;
  void QuoteClose(std::string& text) override;
  void GetColumnTypes(TColumnTypeInfoArray& table) override;
  // Raises "TDBConnOLEDB.FieldValParam: Unsupported field type for field " with its name.
  void FieldValParam(const TField& field, std::string& text) override;

  // --- Names
  void ListDatabases(TStringList& list) override;  // connects anew first
  void ListTables(TStringList& list) override;     // connects first unless connected; without views

  // --- Transactions
  void StartTransaction() override;
  void Commit() override;
  void Rollback() override;       // raises "NOT IMPLEMENTED"
  bool InTransaction() override;  // the same

  // --- Structure to texts and back
  // Raises "Wrong table in columns fetch!", the same of indexes, and "Unknown data type for column %s in table %s: %d".
  void FetchTableStructure(const std::string& table) override;
  void ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) override;
  void ConstraintDescription(const TMetaConstraint& constraint, bool detailed, std::string& text) override;

  // --- Changing the structure. Definitions of columns come in the dialect of MySQL.
  // Raises "To be created, table must have at least one column!".
  void CreateTable(const std::string& table, const TStringList& definitions) override;
  void DropTable(const std::string& table) override;
  void TruncateTable(const std::string& table) override;
  void AddColumn(const std::string& table, const std::string& definition) override;
  void DropColumn(const std::string& table, const std::string& column) override;
  void ModifyColumn(const std::string& table, const std::string& old_name, const std::string& new_name,
                    const std::string& definition) override;
  void DropKey(const std::string& table, const std::string& key) override;
  void DropConstraint(const std::string& table, const std::string& constraint) override;

 protected:
  void Warn(std::string warning) { warnings_.push_back(std::move(warning)); }
  explicit TDBConnOLEDB(TOLEDBProviderMaker maker);  // makes the provider of a connection string

  const TOLEDBProviderMaker& maker() const { return maker_; }
  // For engines that read chunks by the key: whether the primary key is one column.
  bool HasKeyOfOneColumn(const std::string& table);
  // That column. Raises "Table %s can not be opened in chunks!" and, in the name of `engine_class`, what is wrong with
  // the key.
  std::string ChunkKey(const std::string& table, const char* engine_class);
  // "select top COUNT ..." of all rows but the first ones, those before `first`.
  std::string ChunkAfter(const std::string& table, const std::string& key, std::int64_t first, std::int64_t count);

 private:
  std::unique_ptr<TOLEDBDataSet> OpenRows(const std::string& sql);
  // Of the current table; `probe` has its columns as fields.
  void StoreColumns(const std::string& table, const std::vector<TOLEDBColumnRow>& rows, const TOLEDBDataSet& probe);
  void StoreColumn(const std::string& table, const TOLEDBColumnRow& row, const TOLEDBDataSet& probe);
  void StoreKeys(const std::string& table, const std::vector<TOLEDBIndexRow>& rows);
  void StoreKey(const TOLEDBIndexRow& head, const std::vector<TOLEDBIndexRow>& rows);
  std::string DefaultOf(const TOLEDBColumnRow& row);

  TOLEDBProviderMaker maker_;
  TOLEDBDataSource data_source_;
  TStringList warnings_;
};

}  // namespace velmora
