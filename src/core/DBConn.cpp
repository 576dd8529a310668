// SPDX-License-Identifier: GPL-3.0-or-later

// The base engine: connection, names, and the store kept true. Types as texts are in ColumnText.cpp, keys and values in
// Rendering.cpp.

#include "core/DBConn.h"

#include <algorithm>

#include "core/Meta.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

// The current row; an empty one where there is none.
template <class Row>
const Row& CurrentOrEmpty(const TMetaTable<Row>& table) {
  static const Row kEmpty;
  return table.HasCurrent() ? table.Current() : kEmpty;
}

constexpr std::size_t kDeepestFetch = 16;

// A creation text may hold what reads as a statement on its own table, and fetching that table for it would never end;
// nor may such texts lead from table to table without bound.
class TFetchGuard {
 public:
  TFetchGuard(const std::string& table, TStringList& under_way) : under_way_(under_way) {
    if (IndexOf(under_way, table) != kNotInList) RaiseError(Format("Table %s is read within its own reading", table));
    if (under_way.size() >= kDeepestFetch)
      RaiseError(Format("Table %s is read within the reading of %d others", table, under_way.size()));
    under_way.push_back(table);
  }
  ~TFetchGuard() { under_way_.pop_back(); }
  TFetchGuard(const TFetchGuard&) = delete;
  TFetchGuard& operator=(const TFetchGuard&) = delete;

 private:
  TStringList& under_way_;
};

}  // namespace

TDBConn::TDBConn() : meta_(std::make_unique<TMeta>(this)) {}

TDBConn::~TDBConn() = default;

// --- Connection

void TDBConn::Connect() {
  GetConnectionObject().SetConnected(true);
  RefreshTableList();
}

void TDBConn::Disconnect() {
  GetConnectionObject().SetConnected(false);
  meta_->Clear();
}

void TDBConn::Reconnect() {
  Disconnect();
  Connect();
}

void TDBConn::SaveParams(const std::string& /*path*/, TXMLAccess& /*store*/) { RaiseAbstract(); }

bool TDBConn::GetConnected() { return GetConnectionObject().GetConnected(); }

TConnectionObject& TDBConn::GetConnectionObject() { RaiseAbstract(); }

void TDBConn::ApplyParams() { RaiseAbstract(); }

void TDBConn::GetDisplayName(std::string& /*text*/) { RaiseAbstract(); }

// --- Words of the dialect, rows, statements

void TDBConn::AutoIncKeyword(std::string& /*text*/) { RaiseAbstract(); }

std::unique_ptr<TDataset> TDBConn::OpenTable(const std::string& table) {
  return OpenQuery("select * from " + QuoteName(table));
}

bool TDBConn::SupportsChunks(const std::string& /*table*/) { return false; }

std::unique_ptr<TDataset> TDBConn::OpenTableDataChunk(const std::string& /*table*/, std::int64_t /*first*/,
                                                      std::int64_t /*count*/) {
  RaiseAbstract();
}

void TDBConn::CloseTable(std::unique_ptr<TDataset> dataset) {
  if (dataset) dataset->Close();
}

std::unique_ptr<TDataset> TDBConn::OpenQuery(const std::string& /*sql*/) { RaiseAbstract(); }

int TDBConn::GetEngine() { RaiseAbstract(); }

void TDBConn::ParseDDL(const std::string& /*sql*/) { RaiseAbstract(); }

std::int64_t TDBConn::ExecSQL(const std::string& sql) {
  if (on_exec_sql) on_exec_sql(sql);
  return -1;
}

void TDBConn::GetResultSQL(const std::string& sql, TVariant& value) {
  const std::unique_ptr<TDataset> dataset = OpenQuery(sql);
  RunGuarded(
      [&] {
        if (dataset->RecordCount() > 1) {
          std::string engine;
          StrEngine(GetEngine(), engine);
          RaiseError(engine + ".GetResultSQL: exactly one record expected");
        }
        value = dataset->Value(0);
      },
      [&] { dataset->Close(); });
}

void TDBConn::QuoteOpen(std::string& text) { text.clear(); }

void TDBConn::QuoteClose(std::string& text) { text.clear(); }

std::int64_t TDBConn::GetRecordCount(const std::string& table) {
  TVariant count;
  GetResultSQL(Format("select count(*) from %s", QuoteName(table)), count);
  return VarToInt(count);
}

// --- Names

void TDBConn::ListDatabases(TStringList& /*list*/) { RaiseAbstract(); }

void TDBConn::ListTables(TStringList& /*list*/) { RaiseAbstract(); }

void TDBConn::NormalizeName(const std::string& name, std::string& normal) { normal = name; }

// Looks at the rows in place: a lookup would move the store's cursors.
bool TDBConn::TableExists(const std::string& table) {
  const auto& rows = meta_->tTables.Rows();
  return std::any_of(rows.begin(), rows.end(), [&table](const TTableRow& row) { return SameText(row.name, table); });
}

// --- Transactions, copies

void TDBConn::StartTransaction() { RaiseAbstract(); }

void TDBConn::Commit() { RaiseAbstract(); }

void TDBConn::Rollback() { RaiseAbstract(); }

bool TDBConn::InTransaction() { RaiseAbstract(); }

std::unique_ptr<TDBConn> TDBConn::Clone() { RaiseAbstract(); }

std::unique_ptr<TDBConn> TDBConn::ConnectedAsThis(std::unique_ptr<TDBConn> clone) {
  if (GetConnected())
    clone->Connect();  // which would empty a copy of the store
  else
    clone->meta().CopyFrom(meta());
  return clone;
}

// --- Structure to texts and back

void TDBConn::FetchTableStructure(const std::string& /*table*/) { RaiseAbstract(); }

void TDBConn::ConstraintDescription(const TMetaConstraint& /*constraint*/, bool /*detailed*/, std::string& /*text*/) {
  RaiseAbstract();
}

// --- Changing the structure

bool TDBConn::CanCreateTables() { return true; }

void TDBConn::BeforeDataLoad(const std::string& /*table*/) {}

void TDBConn::AfterDataLoad(const std::string& /*table*/) {}

void TDBConn::CreateTable(const std::string& /*table*/, const TStringList& /*definitions*/) { RaiseAbstract(); }

void TDBConn::DropTable(const std::string& table) {
  std::string unused;
  meta_->DropTableSQL(table, unused);
}

void TDBConn::RenameTable(const std::string& old_name, const std::string& new_name) {
  std::string unused;
  meta_->DropTableSQL(old_name, unused);
  meta_->tTables.Append().name = new_name;
  meta_->tTables.Post();
}

void TDBConn::TruncateTable(const std::string& /*table*/) { RaiseAbstract(); }

void TDBConn::AddColumn(const std::string& table, const std::string& /*definition*/) { meta_->InvalidateTable(table); }

void TDBConn::DropColumn(const std::string& table, const std::string& column) {
  std::string unused;
  meta_->DropColumnSQL(table, column, unused);
}

void TDBConn::RenameColumn(const std::string& table, const std::string& /*old_name*/, const std::string& /*new_name*/) {
  meta_->InvalidateTable(table);
}

void TDBConn::ModifyColumn(const std::string& table, const std::string& /*old_name*/, const std::string& /*new_name*/,
                           const std::string& /*definition*/) {
  meta_->InvalidateTable(table);
}

void TDBConn::DropKey(const std::string& table, const std::string& key) {
  std::string unused;
  meta_->DropKeySQL(table, key, unused);
}

void TDBConn::DropConstraint(const std::string& table, const std::string& constraint) {
  std::string unused;
  meta_->DropConstraintSQL(table, constraint, unused);
}

void TDBConn::SurrogateKeyColumn(const std::string& /*column*/, std::string& /*definition*/) { RaiseAbstract(); }

bool TDBConn::SupportsSurrogateKey() { return false; }

// --- Not virtual

std::string TDBConn::QuoteName(const std::string& name) {
  std::string open, close;
  QuoteOpen(open);
  QuoteClose(close);
  return open + name + close;
}

// The total that is reported is the last position, so one table reports 0 of 0, and none reports nothing.
void TDBConn::RefreshTableList() {
  meta_->Clear();
  TStringList names;
  ListTables(names);
  for (std::size_t i = 0; i < names.size(); ++i) {
    meta_->tTables.Append().name = names[i];
    meta_->tTables.Post();
    if (on_progress) on_progress(*this, static_cast<double>(names.size() - 1), static_cast<double>(i));
  }
}

// A fetch may put a new row in place of the one it was called for; it leaves the table's row current, and that is
// marked.
void TDBConn::FetchIfNeeded() {
  auto& tables = meta_->tTables;
  if (!tables.HasCurrent() || tables.Current().fetched) return;
  const std::string name = tables.Current().name;
  const TFetchGuard guard(name, being_fetched_);
  FetchTableStructure(name);
  if (!tables.HasCurrent()) return;
  tables.Amend().fetched = true;
}

std::string TDBConn::CurrentTableName() { return CurrentOrEmpty(meta_->tTables).name; }

std::string TDBConn::CurrentColumnName() { return CurrentOrEmpty(meta_->tColumns).name; }

std::string TDBConn::CurrentKeyName() { return CurrentOrEmpty(meta_->tKeys).name; }

void TDBConn::FirstColumn() { meta_->tColumns.First(); }

void TDBConn::NextColumn() { meta_->tColumns.Next(); }

bool TDBConn::ColumnsEof() { return meta_->tColumns.Eof(); }

void TDBConn::ReadColumn(TMetaColumn& column) {
  FetchIfNeeded();
  TMetaColumn read = ColumnRecord(CurrentOrEmpty(meta_->tTables), CurrentOrEmpty(meta_->tColumns));
  ColumnDescription(read, false, read.description);
  column = std::move(read);
}

void TDBConn::ReadColumnOf(const std::string& table, const std::string& column, TMetaColumn& record) {
  meta_->GotoTable(table);
  FetchIfNeeded();
  meta_->GotoColumn(table, column);
  ReadColumn(record);
}

void TDBConn::ReadKey(TMetaKey& key) {
  FetchIfNeeded();
  key = meta_->KeyRecord(CurrentOrEmpty(meta_->tTables), CurrentOrEmpty(meta_->tKeys));
}

void TDBConn::ReadConstraint(TMetaConstraint& constraint) {
  FetchIfNeeded();
  constraint = meta_->ConstraintRecord(CurrentOrEmpty(meta_->tTables), CurrentOrEmpty(meta_->tConstraints));
}

void TDBConn::ColumnText(const std::string& table, const std::string& column, std::string& text) {
  TMetaColumn record;
  ReadColumnOf(table, column, record);
  ColumnDescription(record, true, text);
}

std::string DefinitionLines(const TStringList& definitions) {
  std::string lines;
  for (std::size_t i = 0; i < definitions.size(); ++i)
    lines += "\t" + definitions[i] + (i + 1 < definitions.size() ? ",\r\n" : "\r\n");
  return lines;
}

// An error of the end has nowhere to go from here; the rows are freed with their dataset all the same.
TTableGuard::~TTableGuard() {
  try {
    conn_.CloseTable(std::move(dataset_));
  } catch (const EVelmora&) {
    return;
  }
}

}  // namespace velmora
