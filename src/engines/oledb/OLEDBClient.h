// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The client classes of the OLE DB engines: a data source, its session, and the rows of a statement.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/ClientConnection.h"
#include "core/Dataset.h"
#include "formats/port/Provider.h"

namespace velmora {

class TOLEDBDataSource;

// ISOLATIONLEVEL_READCOMMITTED, and XACTTC_SYNC of ITransaction::Commit.
inline constexpr std::uint32_t kReadCommitted = 4096;
inline constexpr std::uint32_t kSyncCommit = 2;

// The session of a data source; every call raises "Not connected" where that is not open.
class TOLEDBSession {
 public:
  explicit TOLEDBSession(TOLEDBDataSource& source) : source_(source) {}

  TStringList GetCatalogs();
  std::vector<TOLEDBTableRow> GetTables();
  std::vector<TOLEDBColumnRow> GetColumns(const std::string& table);
  std::vector<TOLEDBIndexRow> GetIndexes(const std::string& table);
  TOLEDBRowset GetCatalogRows(ECatalogRows kind, const std::string& table);
  void StartTransaction(std::uint32_t isolation);
  void Commit(bool retaining, std::uint32_t flags);  // raises for what is not (false, kSyncCommit)

 private:
  TOLEDBDataSource& source_;
};

// Created unconnected; never asks anybody for a password. Destruction closes and raises nothing.
class TOLEDBDataSource final : public TClientConnection {
 public:
  explicit TOLEDBDataSource(TOLEDBProviderMaker maker);

  // Takes a provider's connection string and makes that provider ready; an open one is closed first. Raises what
  // TInitString and the maker raise.
  void SetInitializationString(const std::string& text);
  const std::string& InitializationString() const { return text_; }  // as it was set, password and all
  // The same property by property, for CreateDataSource.
  void SetProviderName(const std::string& name);
  void SetProperty(const std::string& name, const std::string& value);
  void CreateDataSource();

  bool GetConnected() const override;
  void Open();  // initialises the provider once more, past BeforeConnect
  void Close();

  std::string DBName() const;  // "Data Source" of the string as it stands
  std::int64_t Execute(const std::string& sql);
  TStringList TakeWarnings() { return provider_ == nullptr ? TStringList() : provider_->TakeWarnings(); }
  TOLEDBSession& Session() { return session_; }
  TOLEDBProvider& Provider();                     // raises "Not connected"
  int Connection() const { return connection_; }  // another number after each Close

 private:
  void DoConnect() override { Open(); }
  void DoDisconnect() override { Close(); }

  TOLEDBProviderMaker maker_;
  std::string text_;
  TInitString properties_;
  std::unique_ptr<TOLEDBProvider> provider_;
  TOLEDBSession session_;
  int connection_ = 0;
};

// Properties of a rowset. Rows are held whole, so that all of them hold for every dataset.
enum ERowsetFlags : unsigned { rfLocate = 1, rfScroll = 2, rfCanScrollBackwards = 4, rfCanFetchBackwards = 8 };

// The row of a rowset's metadata for one field.
struct TOLEDBColumnInfo {
  bool DBCOLUMN_ISAUTOINCREMENT = false;
};

// One statement and its rows; as a dataset it is open from Open to Close. The data source must live as long.
class TOLEDBDataSet final : public TDataset {
 public:
  void SetOLEDBDataSource(TOLEDBDataSource& source) { source_ = &source; }
  void SetCommandText(std::string sql) { sql_ = std::move(sql); }
  void SetFlags(unsigned flags) { flags_ = flags; }
  unsigned Flags() const { return flags_; }
  void Open();  // raises what the provider raises; so does the first look at the rows, which may come only then

  TOLEDBColumnInfo ColumnInfo(std::string_view field) const;  // ignoring case; false where the provider is silent

  const std::vector<TFieldDef>& Fields() const override { return rowset_.fields; }
  std::int64_t RecordCount() const override;
  bool Eof() const override;
  void First() override { row_ = 0; }
  void Next() override;
  void Prior();  // from past the last row to the last row; on the first row nothing happens
  const TVariant& Value(std::size_t field) const override;
  void Close() override;

 private:
  const TRowsOfValues& Rows() const;

  TOLEDBDataSource* source_ = nullptr;
  std::string sql_;
  unsigned flags_ = 0;
  mutable TOLEDBRowset rowset_;
  int connection_ = 0;  // that the rows come by
  std::size_t row_ = 0;
};

}  // namespace velmora
