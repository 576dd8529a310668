// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// TDBConn: the abstract connection to one data source of one kind, an engine.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/ColumnTypes.h"
#include "core/Dataset.h"
#include "core/Engines.h"
#include "core/MetaRecords.h"
#include "util/Lists.h"
#include "util/Variant.h"

namespace velmora {

class TMeta;
class TXMLAccess;

// The client object of an engine, as far as the base needs it.
class TConnectionObject {
 public:
  virtual ~TConnectionObject() = default;
  virtual bool GetConnected() const = 0;
  virtual void SetConnected(bool connected) = 0;  // raises the client's error
  // Whether the server holds a transaction open on this connection, where the client can tell. `refresh` asks the
  // server, which is needed after an error.
  virtual std::optional<bool> TransactionOpen(bool /*refresh*/) { return std::nullopt; }
  // How many warnings the server has to the last statement of ExecSQL, where the client can tell.
  virtual std::size_t WarningCount() const { return 0; }
};

// An engine owns one TMeta, the store of its database's structure, and is the only way to the data source. It is
// created with its parameters, not connected; Connect lists the tables, their details come on first use.
//
// Text results are out arguments: the callee assigns them, and leaves them alone when it raises. An operation marked
// "abstract" raises EAbstractError unless the engine has it; "default" says what the base does. All raise EVelmora.
class TDBConn {
 public:
  TDBConn();
  virtual ~TDBConn();
  TDBConn(const TDBConn&) = delete;
  TDBConn& operator=(const TDBConn&) = delete;

  TMeta& meta() { return *meta_; }
  const TMeta& meta() const { return *meta_; }

  // Hooks of the class; nothing in the program assigns them after creation.
  std::function<void(TDBConn& sender, double total, double position)> on_progress;  // while the table list is read
  bool allow_data = true;
  bool fetch_in_chunks = false;  // queries of MySQL are read in fetch blocks
  bool no_defaults = false;      // column texts with attributes leave the default out
  std::function<void(const std::string& table, const std::string& field, std::int64_t row, const std::string& message)>
      on_open;                                              // a warning about a row
  std::function<void(const std::string& sql)> on_exec_sql;  // before a statement runs

  // --- Connection
  virtual void Connect();     // default: the client object's Connected, then RefreshTableList
  virtual void Disconnect();  // default: the client object's Connected off, then the store is emptied
  virtual void Reconnect();   // default: Disconnect, then Connect
  virtual void SaveParams(const std::string& path, TXMLAccess& store);  // abstract; the engine's keys under the path
  virtual bool GetConnected();                                          // default: the client object's Connected
  virtual TConnectionObject& GetConnectionObject();                     // abstract
  virtual void ApplyParams();                      // abstract; held parameters go to the client object
  virtual void GetDisplayName(std::string& text);  // abstract

  // --- Words of the dialect, rows, statements
  virtual void DateTimeLiteral(TDateTime value, std::string& text);       // default: the text without quotes
  virtual void AutoIncKeyword(std::string& text);                         // abstract
  virtual std::unique_ptr<TDataset> OpenTable(const std::string& table);  // default: every row; ends by CloseTable
  virtual bool SupportsChunks(const std::string& table);                  // default: false
  virtual std::unique_ptr<TDataset> OpenTableDataChunk(const std::string& table, std::int64_t first,
                                                       std::int64_t count);  // abstract; `first` counts from 1
  virtual void CloseTable(std::unique_ptr<TDataset> dataset);
  virtual std::unique_ptr<TDataset> OpenQuery(const std::string& sql);  // abstract; the caller owns the result
  virtual int GetEngine();                                              // abstract; the engine number
  virtual void ParseDDL(const std::string& sql);                        // abstract; applies statements to the store
  virtual std::int64_t ExecSQL(const std::string& sql);                 // default: fires on_exec_sql, gives -1
  virtual void GetResultSQL(const std::string& sql, TVariant& value);   // default: the one value of a query
  virtual void QuoteOpen(std::string& text);                            // default: empty
  virtual void QuoteClose(std::string& text);                           // default: empty
  virtual std::int64_t GetRecordCount(const std::string& table);        // default: by select count(*)
  virtual void GetColumnTypes(TColumnTypeInfoArray& table);             // default: the generic table
  virtual void GetColumnTypeNames(TStringList& list);                   // default: the names, sorted
  virtual void EscapeString(const std::string& text, std::string& escaped);  // default: ' doubled, NUL a blank
  virtual void FieldValParam(const TField& field, std::string& text);        // default: the value as an SQL literal

  // --- Names
  virtual void ListDatabases(TStringList& list);                             // abstract
  virtual void ListTables(TStringList& list);                                // abstract
  virtual void NormalizeName(const std::string& name, std::string& normal);  // default: unchanged
  virtual bool TableExists(const std::string& table);                        // default: asks the store, ignoring case

  // --- Transactions, copies
  virtual void StartTransaction();           // abstract
  virtual void Commit();                     // abstract
  virtual void Rollback();                   // abstract
  virtual bool InTransaction();              // abstract
  virtual std::unique_ptr<TDBConn> Clone();  // abstract; same parameters, a copy of the store

  // --- Structure to texts and back
  // Abstract. Adds all detail rows of the current, unfetched table to the store; may set `type` and `cached_ddl`. It
  // leaves the table's row current; FetchIfNeeded marks it fetched.
  virtual void FetchTableStructure(const std::string& table);
  // Default: the type in the words of the type table, see ColumnText.cpp.
  virtual void ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text);
  virtual void ParseColumnDescription(const std::string& text, TMetaColumn& column);
  virtual void KeyDescription(const TMetaKey& key, bool detailed, std::string& text);
  virtual void ConstraintDescription(const TMetaConstraint& constraint, bool detailed, std::string& text);  // abstract
  virtual void DecodeColumn(const std::string& type_name, TNumber length, TNumber precision, TNumber scale,
                            TNeutralType& datatype, TNumber& out_length, TNumber& out_precision, TNumber& out_scale);
  virtual void ConvertColumn(const TMetaColumn& source, TMetaColumn& column);

  // --- Changing the structure: the base keeps the store true and sends nothing
  virtual bool CanCreateTables();                                                      // default: true
  virtual void BeforeDataLoad(const std::string& table);                               // default: nothing
  virtual void AfterDataLoad(const std::string& table);                                // default: nothing
  virtual void CreateTable(const std::string& table, const TStringList& definitions);  // abstract
  virtual void DropTable(const std::string& table);                                    // default: out of the store
  virtual void RenameTable(const std::string& old_name, const std::string& new_name);  // default: a new, unfetched row
  virtual void TruncateTable(const std::string& table);                                // abstract
  virtual void AddColumn(const std::string& table, const std::string& definition);     // default: invalidates
  virtual void DropColumn(const std::string& table, const std::string& column);        // default: out of the store
  virtual void RenameColumn(const std::string& table, const std::string& old_name, const std::string& new_name);
  virtual void ModifyColumn(const std::string& table, const std::string& old_name, const std::string& new_name,
                            const std::string& definition);                              // both default: invalidate
  virtual void DropKey(const std::string& table, const std::string& key);                // default: out of the store
  virtual void DropConstraint(const std::string& table, const std::string& constraint);  // default: out of the store
  virtual void SurrogateKeyColumn(const std::string& column, std::string& definition);   // abstract
  virtual bool SupportsSurrogateKey();                                                   // default: false

  // --- Not virtual
  std::string QuoteName(const std::string& name);  // the engine's opening quote, the name, its closing quote
  void RefreshTableList();                         // the store holds the listed names and nothing else
  // On the store's current table. Raises "Table %s is read within its own reading" where its fetch comes back to it.
  void FetchIfNeeded();

  std::string CurrentTableName();
  std::string CurrentColumnName();
  std::string CurrentKeyName();
  void FirstColumn();
  void NextColumn();
  bool ColumnsEof();

  void ReadColumn(TMetaColumn& column);  // from the current rows; fetches first, as the next three do
  void ReadColumnOf(const std::string& table, const std::string& column, TMetaColumn& record);
  void ReadKey(TMetaKey& key);
  void ReadConstraint(TMetaConstraint& constraint);
  void ColumnText(const std::string& table, const std::string& column, std::string& text);

  // The first row of the type table that writes `datatype`. Raises "TDBConn.ColumnTypeInfo: Unhandled type".
  void ColumnTypeInfo(TNeutralType datatype, TColumnTypeInfo& row);

 protected:
  // The end of Clone for an engine with a client: the copy is connected where this engine is, and its store then holds
  // table names; else it gets a copy of the store.
  std::unique_ptr<TDBConn> ConnectedAsThis(std::unique_ptr<TDBConn> clone);

 private:
  std::unique_ptr<TMeta> meta_;
  TStringList being_fetched_;  // tables, each within the fetch of the one before
};

// Ends a dataset of OpenTable through CloseTable of its engine.
class TTableGuard {
 public:
  TTableGuard(TDBConn& conn, const std::string& table) : conn_(conn), dataset_(conn.OpenTable(table)) {}
  ~TTableGuard();
  TTableGuard(const TTableGuard&) = delete;
  TTableGuard& operator=(const TTableGuard&) = delete;
  TDataset& operator*() { return *dataset_; }
  TDataset* operator->() { return dataset_.get(); }

 private:
  TDBConn& conn_;
  std::unique_ptr<TDataset> dataset_;
};

// The lines between the brackets of a created table: indented, a comma after all but the last, each with its line end.
std::string DefinitionLines(const TStringList& definitions);

}  // namespace velmora
