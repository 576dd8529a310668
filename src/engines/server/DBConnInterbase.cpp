// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/DBConnInterbase.h"

#include <utility>

#include "core/Meta.h"
#include "engines/server/InterbaseTypes.h"
#include "util/Format.h"
#include "util/Text.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kTableList[] =
    "select rdb$relation_name from rdb$relations where rdb$system_flag <> 1 and rdb$view_blr is null order by 1";
// Deliberate: the table's name goes in as it stands, so that one with a quote in it cannot be asked for. Sub type,
// default, description and computed source are asked for and not read: a computed column is like any other.
constexpr char kColumnList[] =
    "SELECT a.RDB$FIELD_NAME, b.RDB$FIELD_PRECISION, b.RDB$FIELD_TYPE, b.RDB$FIELD_SUB_TYPE, c.RDB$TYPE_NAME, "
    "a.RDB$NULL_FLAG, a.RDB$DEFAULT_VALUE, b.RDB$FIELD_LENGTH, b.RDB$FIELD_SCALE, b.RDB$FIELD_SUB_TYPE, "
    "b.RDB$DESCRIPTION, b.RDB$CHARACTER_LENGTH, a.RDB$DEFAULT_SOURCE, "
    "b.RDB$DEFAULT_SOURCE as RDB$DEFAULT_SOURCE_DOMAIN,b.RDB$COMPUTED_SOURCE FROM RDB$RELATION_FIELDS a "
    "JOIN RDB$FIELDS b ON (b.RDB$FIELD_NAME = a.RDB$FIELD_SOURCE) "
    "LEFT JOIN RDB$TYPES c ON (b.RDB$FIELD_TYPE = c.RDB$TYPE and c.RDB$FIELD_NAME = 'RDB$FIELD_TYPE') "
    "WHERE a.RDB$RELATION_NAME = '%s' ORDER BY a.RDB$RELATION_NAME, a.RDB$FIELD_POSITION";
constexpr char kDecimal[] = "DECIMAL";

// The precision of a column for which the server states none, as floating point ones, by its length in bytes.
std::int64_t PrecisionOfLength(std::int64_t length) {
  switch (length) {
    case 4:
      return 8;
    case 8:
      return 12;
    default:
      return 0;
  }
}

std::int64_t Number(const TDataset& row, std::string_view field) { return VarToInt(row.FieldByName(field).value); }

std::int64_t PrecisionOf(const TDataset& row) {
  const bool stated = !VarIsNull(row.FieldByName("RDB$FIELD_PRECISION").value);
  return stated ? Number(row, "RDB$FIELD_PRECISION") : PrecisionOfLength(Number(row, "RDB$FIELD_LENGTH"));
}

std::int64_t LengthOf(const TDataset& row) {
  const std::int64_t characters = Number(row, "RDB$CHARACTER_LENGTH");
  return characters > 0 ? characters : Number(row, "RDB$FIELD_LENGTH");
}

// Whole numbers and doubles with a scale are decimals, whatever they are stored as.
std::string TypeWordOf(const TDataset& row) {
  return Number(row, "RDB$FIELD_SCALE") != 0 ? kDecimal : VarToText(row.FieldByName("RDB$TYPE_NAME").value);
}

// Deliberate: the word is that of the record, in whatever dialect it was read, with numbers by the neutral type alone.
std::string TypeText(const std::string& word, const TMetaColumn& column) {
  if (kFractional.Holds(column.datatype)) return Format("%s(%d,%d)", word, column.size, column.precision);
  if (kCharacter.Holds(column.datatype)) return Format("%s(%d)", word, column.size);
  return word;
}

}  // namespace

TDBConnInterbase::TDBConnInterbase(std::unique_ptr<TIBODatabase> client, std::string server, std::string database,
                                   std::string username, std::string password)
    : client_(std::move(client)),
      server_(std::move(server)),
      database_(std::move(database)),
      username_(std::move(username)),
      password_(std::move(password)) {
  client_->BeforeConnect = [this] { SetClientParams(); };
  query_ = std::make_unique<TIBOQuery>(*client_);
}

void TDBConnInterbase::SetClientParams() {
  client_->SetParam(kServerParam, server_);
  client_->DatabaseName = database_;
  client_->SetParam(kUserNameParam, username_);
  client_->Password = password_;
}

// --- Connection

void TDBConnInterbase::Connect() {
  client_->SetConnected(true);
  RefreshTableList();
}

void TDBConnInterbase::Disconnect() {
  client_->SetConnected(false);
  meta().Clear();
}

void TDBConnInterbase::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/server", server_);
  store.xmlSetVal(path + "/database", database_);
  store.xmlSetVal(path + "/username", username_);
  store.xmlSetVal(path + "/password", password_);
}

bool TDBConnInterbase::GetConnected() { return client_->GetConnected(); }

void TDBConnInterbase::GetDisplayName(std::string& text) { text = database_; }

// --- Rows, statements

std::unique_ptr<TDataset> TDBConnInterbase::OpenQuery(const std::string& sql) {
  auto query = std::make_unique<TIBOQuery>(*client_);
  query->SQL = sql;
  query->Open();
  return query;
}

int TDBConnInterbase::GetEngine() { return kEngineInterbase; }

std::int64_t TDBConnInterbase::ExecSQL(const std::string& sql) {
  TDBConn::ExecSQL(sql);
  query_->ExecuteDirect(sql);
  return query_->RowsAffected();
}

void TDBConnInterbase::GetColumnTypes(TColumnTypeInfoArray& table) { table = InterbaseColumnTypes(); }

// --- Names

void TDBConnInterbase::ListDatabases(TStringList& list) { list.clear(); }

void TDBConnInterbase::ListTables(TStringList& list) {
  const std::unique_ptr<TDataset> rows = OpenQuery(kTableList);
  list.clear();
  for (; !rows->Eof(); rows->Next()) list.push_back(VarToText(rows->Value(0)));
}

// --- Transactions, copies

void TDBConnInterbase::StartTransaction() { client_->StartTransaction(); }

void TDBConnInterbase::Commit() { client_->Commit(); }

void TDBConnInterbase::Rollback() { client_->Rollback(); }

bool TDBConnInterbase::InTransaction() { return client_->InTransaction(); }

std::unique_ptr<TDBConn> TDBConnInterbase::Clone() {
  return ConnectedAsThis(
      std::make_unique<TDBConnInterbase>(client_->NewDatabase(), server_, database_, username_, password_));
}

// --- Structure to texts and back

void TDBConnInterbase::FetchTableStructure(const std::string& table) {
  meta().InvalidateTable(table);
  meta().GotoTable(table);
  const std::unique_ptr<TDataset> rows = OpenQuery(Format(kColumnList, table));
  for (; !rows->Eof(); rows->Next()) AppendColumn(*rows);
}

void TDBConnInterbase::AppendColumn(const TDataset& row) {
  TNeutralType datatype{};
  TNumber length, precision, scale;
  DecodeColumn(TypeWordOf(row), LengthOf(row), PrecisionOf(row), Number(row, "RDB$FIELD_SCALE"), datatype, length,
               precision, scale);
  TColumnRow& column = meta().tColumns.Append();
  column.name = VarToText(row.FieldByName("RDB$FIELD_NAME").value);
  column.datatype = datatype;
  column.size = length ? *length : precision.value_or(0);
  column.precision = static_cast<std::int32_t>(scale.value_or(0));
  column.notnull = !VarIsNull(row.FieldByName("RDB$NULL_FLAG").value);  // whatever it holds
  meta().tColumns.Post();
}

void TDBConnInterbase::ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) {
  std::string word = column.description;
  // A record that comes straight from the store has no description yet.
  if (!detailed || word.empty()) TDBConn::ColumnDescription(column, false, word);
  if (detailed) {
    word = TypeText(word, column);
    if (column.notnull) word += " not null";
    if (column.autoinc) word += " auto_increment";
    word = Trim(word);
  }
  text = std::move(word);
}

void TDBConnInterbase::ParseColumnDescription(const std::string& /*text*/, TMetaColumn& /*column*/) {}

// --- Changing the structure

void TDBConnInterbase::DropTable(const std::string& table) {
  const std::string statement = Format("drop table %s", QuoteName(table));
  TDBConn::DropTable(table);
  ExecSQL(statement);
}

void TDBConnInterbase::DropColumn(const std::string& table, const std::string& column) {
  const std::string statement = Format("alter table %s drop %s", QuoteName(table), QuoteName(column));
  TDBConn::DropColumn(table, column);
  ExecSQL(statement);
}

void TDBConnInterbase::DropKey(const std::string& table, const std::string& key) { TDBConn::DropKey(table, key); }

void TDBConnInterbase::DropConstraint(const std::string& table, const std::string& constraint) {
  TDBConn::DropConstraint(table, constraint);
}

void TDBConnInterbase::SurrogateKeyColumn(const std::string& /*column*/, std::string& /*definition*/) {}

}  // namespace velmora
