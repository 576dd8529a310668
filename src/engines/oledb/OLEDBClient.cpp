// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/OLEDBClient.h"

#include <utility>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNotConnected[] = "Not connected";
constexpr char kOtherCommit[] = "Commit(retaining %d, flags %d) is not supported";
constexpr char kNoSource[] = "A dataset needs a data source before it is opened";

const TVariant kNullValue;

}  // namespace

// --- TOLEDBSession

TStringList TOLEDBSession::GetCatalogs() { return source_.Provider().Catalogs(); }

std::vector<TOLEDBTableRow> TOLEDBSession::GetTables() { return source_.Provider().Tables(); }

std::vector<TOLEDBColumnRow> TOLEDBSession::GetColumns(const std::string& table) {
  return source_.Provider().Columns(table);
}

std::vector<TOLEDBIndexRow> TOLEDBSession::GetIndexes(const std::string& table) {
  return source_.Provider().Indexes(table);
}

TOLEDBRowset TOLEDBSession::GetCatalogRows(ECatalogRows kind, const std::string& table) {
  return source_.Provider().CatalogRows(kind, table);
}

void TOLEDBSession::StartTransaction(std::uint32_t isolation) { source_.Provider().StartTransaction(isolation); }

void TOLEDBSession::Commit(bool retaining, std::uint32_t flags) {
  if (retaining || flags != kSyncCommit) RaiseError(Format(kOtherCommit, retaining, flags));
  source_.Provider().Commit();
}

// --- TOLEDBDataSource

TOLEDBDataSource::TOLEDBDataSource(TOLEDBProviderMaker maker) : maker_(std::move(maker)), session_(*this) {}

void TOLEDBDataSource::SetInitializationString(const std::string& text) {
  TInitString properties(text);
  Close();
  text_ = text;
  properties_ = std::move(properties);
  provider_ = maker_(properties_);
}

void TOLEDBDataSource::SetProviderName(const std::string& name) {
  Close();
  properties_ = {};
  properties_.Set("Provider", name);
}

void TOLEDBDataSource::SetProperty(const std::string& name, const std::string& value) { properties_.Set(name, value); }

void TOLEDBDataSource::CreateDataSource() { maker_(properties_)->CreateDataSource(); }

bool TOLEDBDataSource::GetConnected() const { return provider_ != nullptr && provider_->Initialized(); }

void TOLEDBDataSource::Open() {
  if (GetConnected()) return;
  if (provider_ == nullptr) provider_ = maker_(properties_);
  provider_->Initialize();
}

// The provider is let go of before it is asked to end, so that one which fails to is not met again.
void TOLEDBDataSource::Close() {
  const std::unique_ptr<TOLEDBProvider> provider = std::exchange(provider_, nullptr);
  if (provider == nullptr) return;
  ++connection_;
  provider->Uninitialize();
}

std::string TOLEDBDataSource::DBName() const { return properties_.Value("Data Source"); }

std::int64_t TOLEDBDataSource::Execute(const std::string& sql) { return Provider().Execute(sql); }

TOLEDBProvider& TOLEDBDataSource::Provider() {
  if (!GetConnected()) RaiseError(kNotConnected);
  return *provider_;
}

// --- TOLEDBDataSet

void TOLEDBDataSet::Open() {
  Close();
  if (source_ == nullptr) RaiseError(kNoSource);
  rowset_ = source_->Provider().Open(sql_);
  connection_ = source_->Connection();
}

TOLEDBColumnInfo TOLEDBDataSet::ColumnInfo(std::string_view field) const {
  for (std::size_t i = 0; i < rowset_.fields.size() && i < rowset_.is_autoincrement.size(); ++i)
    if (SameText(rowset_.fields[i].name, field)) return {rowset_.is_autoincrement[i]};
  return {};
}

// Rows that are still to come need the connection that was asked for them.
const TRowsOfValues& TOLEDBDataSet::Rows() const {
  if (rowset_.read_rows) {
    if (source_->Connection() != connection_) RaiseError(kNotConnected);
    rowset_.rows = rowset_.read_rows();
    rowset_.read_rows = nullptr;
  }
  return rowset_.rows;
}

std::int64_t TOLEDBDataSet::RecordCount() const { return static_cast<std::int64_t>(Rows().size()); }

bool TOLEDBDataSet::Eof() const { return row_ >= Rows().size(); }

void TOLEDBDataSet::Next() {
  if (!Eof()) ++row_;
}

void TOLEDBDataSet::Prior() {
  if (row_ > 0) --row_;
}

const TVariant& TOLEDBDataSet::Value(std::size_t field) const {
  if (field >= rowset_.fields.size()) throw EListError(static_cast<std::int64_t>(field));
  if (Eof()) return kNullValue;
  const TMemDataset::TRow& row = rowset_.rows[row_];
  return field < row.size() ? row[field] : kNullValue;
}

void TOLEDBDataSet::Close() {
  rowset_.rows = {};
  rowset_.read_rows = nullptr;
  row_ = 0;
}

}  // namespace velmora
