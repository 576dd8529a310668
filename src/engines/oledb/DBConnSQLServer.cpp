// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/DBConnSQLServer.h"

#include <algorithm>
#include <utility>

#include "core/Meta.h"
#include "engines/oledb/SQLServerCatalog.h"
#include "engines/oledb/SQLServerTypes.h"
#include "formats/port/InitString.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kWindowsLogin[] =
    "Provider=SQLOLEDB.1;Persist Security Info=True;Integrated Security=SSPI;Initial Catalog=%s;Data Source=%s;Connect "
    "Timeout=5;Use Procedure for Prepare=1;Auto Translate=True;Packet Size=4096";
constexpr char kServerLogin[] =
    "Provider=SQLOLEDB.1;Persist Security Info=True;User ID=%s;Password=%s;Initial Catalog=%s;Data Source=%s;Connect "
    "Timeout=5;Use Procedure for Prepare=1;Auto Translate=True;Packet Size=4096";
constexpr char kUnknownConstraint[] = "Unknown constraint type";
constexpr char kOutOfRange[] = "Date/time value out of range";

constexpr TDateTime kFirstDay = -53688.0;   // 1753-01-01
constexpr std::int64_t kKindOfStatus = 15;  // the bits of a constraint's status that tell its kind

constexpr std::pair<std::int64_t, std::int32_t> kConstraintKinds[] = {
    {1, kPrimaryConstraint}, {2, kUniqueConstraint},  {3, kForeignKeyConstraint},
    {4, kCheckConstraint},   {5, kDefaultConstraint},
};

std::string TextOf(const TDataset& row, const std::string& field) { return VarToText(row.FieldByName(field).value); }

bool IsOne(const TDataset& row, const std::string& field) { return VarToInt(row.FieldByName(field).value) == 1; }

bool IsNull(const TDataset& row, const std::string& field) { return VarIsNull(row.FieldByName(field).value); }

TNumber NumberOf(const TDataset& row, const std::string& field) {
  const TVariant& value = row.FieldByName(field).value;
  return VarIsNull(value) ? TNumber() : VarToInt(value);
}

// "col" and 3 give "col3".
std::string Numbered(const char* field, int number) { return field + std::to_string(number); }

}  // namespace

TDBConnSQLServer::TDBConnSQLServer(std::string server, std::string database, std::string username, std::string password,
                                   bool windows_authentication, TOLEDBProviderMaker maker)
    : TDBConnOLEDB(std::move(maker)),
      server_(std::move(server)),
      database_(std::move(database)),
      username_(std::move(username)),
      password_(std::move(password)),
      windows_authentication_(windows_authentication) {}

// --- Connection

void TDBConnSQLServer::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/server", server_);
  store.xmlSetVal(path + "/database", database_);
  store.xmlSetVal(path + "/username", username_);
  store.xmlSetVal(path + "/password", password_);
  store.xmlSetBool(path + "/windows_authentication", windows_authentication_);
}

void TDBConnSQLServer::ApplyParams() {
  const std::string database = InitValue(database_);
  const std::string server = InitValue(server_);
  GetConnectionObject().SetInitializationString(
      windows_authentication_ ? Format(kWindowsLogin, database, server)
                              : Format(kServerLogin, InitValue(username_), InitValue(password_), database, server));
}

void TDBConnSQLServer::GetDisplayName(std::string& text) {
  text = Format("%s.%s", server_.empty() ? "localhost" : server_, database_);
}

// --- Words of the dialect, rows, statements

bool TDBConnSQLServer::SupportsChunks(const std::string& table) { return HasKeyOfOneColumn(table); }

std::unique_ptr<TDataset> TDBConnSQLServer::OpenTableDataChunk(const std::string& table, std::int64_t first,
                                                               std::int64_t count) {
  return OpenQuery(ChunkAfter(table, ChunkKey(table, "TDBConnSQLServer"), first, count));
}

int TDBConnSQLServer::GetEngine() { return kEngineSQLServer; }

void TDBConnSQLServer::GetColumnTypes(TColumnTypeInfoArray& table) { table = SQLServerColumnTypes(); }

// Deliberate: a timestamp field is not held against the range.
void TDBConnSQLServer::FieldValParam(const TField& field, std::string& text) {
  const EFieldKind kind = field.def.kind;
  const bool dated = kind == EFieldKind::Date || kind == EFieldKind::Time || kind == EFieldKind::DateTime;
  if (dated && !VarIsNull(field.value) && VarToFloat(field.value) < kFirstDay) RaiseError(kOutOfRange);
  TDBConnOLEDB::FieldValParam(field, text);
}

// --- Copies

std::unique_ptr<TDBConn> TDBConnSQLServer::Clone() {
  return ConnectedAsThis(
      std::make_unique<TDBConnSQLServer>(server_, database_, username_, password_, windows_authentication_, maker()));
}

// --- Structure to texts and back

void TDBConnSQLServer::FetchTableStructure(const std::string& table) {
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the argument may be a text of the store
  const std::string name = table;
  meta().InvalidateTable(name);
  meta().GotoTable(name);
  std::string escaped;
  EscapeString(name, escaped);
  FetchColumns(escaped);
  FetchKeys(escaped);
  FetchConstraints(escaped);
}

void TDBConnSQLServer::FetchColumns(const std::string& name) {
  const std::unique_ptr<TDataset> rows = OpenQuery(ColumnsQuery(name));
  for (rows->First(); !rows->Eof(); rows->Next()) {
    TNeutralType datatype = ntUnknown;
    TNumber length, precision, scale;
    DecodeColumn(TextOf(*rows, "data_type"), NumberOf(*rows, "character_maximum_length"),
                 NumberOf(*rows, "numeric_precision"), NumberOf(*rows, "numeric_scale"), datatype, length, precision,
                 scale);
    TColumnRow& column = meta().tColumns.Append();
    column.name = TextOf(*rows, "column_name");
    // Deliberate: in exactly these letters, so a server that answers "NO" has columns that all take null.
    column.notnull = TextOf(*rows, "is_nullable") == "No";
    column.default_ = TextOf(*rows, "column_default");
    column.datatype = datatype;
    column.size = length ? *length : precision.value_or(0);
    column.precision = static_cast<std::int32_t>(scale.value_or(0));
    column.autoinc = IsOne(*rows, "IsIdentity");
    meta().tColumns.Post();
  }
}

// Deliberate: the clustered index is taken for the primary key, whether it is one or not.
void TDBConnSQLServer::FetchKeys(const std::string& name) {
  const std::unique_ptr<TDataset> rows = OpenQuery(KeysQuery(name));
  for (rows->First(); !rows->Eof(); rows->Next()) {
    if (IsNull(*rows, "col1")) continue;
    TKeyRow& key = meta().tKeys.Append();
    key.name = TextOf(*rows, "name");
    key.unique = IsOne(*rows, "IsUnique");
    key.primary = IsOne(*rows, "IsClustered");
    meta().tKeys.Post();
    for (int i = 1; i <= kCatalogColumns; ++i) {
      const std::string column = Numbered("col", i);
      if (IsNull(*rows, column)) continue;
      TKeyFieldRow& field = meta().tKeyFields.Append();
      field.column = TextOf(*rows, column);
      field.order = IsOne(*rows, column + "_desc") ? "D" : "A";
      meta().tKeyFields.Post();
    }
  }
}

void TDBConnSQLServer::FetchConstraints(const std::string& name) {
  const std::unique_ptr<TDataset> rows = OpenQuery(ConstraintsQuery(name));
  for (rows->First(); !rows->Eof(); rows->Next()) StoreConstraint(*rows);
}

// The condition of a check is not kept.
void TDBConnSQLServer::StoreConstraint(const TDataset& row) {
  TConstraintRow& constraint = meta().tConstraints.Append();
  constraint.name = TextOf(row, "name");
  const std::int64_t bits = VarToInt(row.FieldByName("status").value) & kKindOfStatus;
  const auto* kind = std::ranges::find(kConstraintKinds, bits, &std::pair<std::int64_t, std::int32_t>::first);
  if (kind == std::end(kConstraintKinds)) RaiseError(kUnknownConstraint);
  constraint.constraint_type = kind->second;
  const bool foreign = kind->second == kForeignKeyConstraint;
  if (foreign) constraint.foreign_table = TextOf(row, "fgntable");
  if (kind->second == kDefaultConstraint) constraint.def_value = TextOf(row, "text");
  meta().tConstraints.Post();
  if (!foreign) {
    if (!IsNull(row, "col")) StoreConstraintField(TextOf(row, "col"), {});
    return;
  }
  for (int i = 1; i <= kCatalogColumns; ++i)
    if (!IsNull(row, Numbered("loccol", i)))
      StoreConstraintField(TextOf(row, Numbered("loccol", i)), TextOf(row, Numbered("fgncol", i)));
}

void TDBConnSQLServer::StoreConstraintField(const std::string& local, const std::string& foreign) {
  TConstraintFieldRow& field = meta().tConstraintFields.Append();
  field.local_column = local;
  field.foreign_column = foreign;
  meta().tConstraintFields.Post();
}

void TDBConnSQLServer::ParseColumnDescription(const std::string& /*text*/, TMetaColumn& /*column*/) {}

// --- Changing the structure

void TDBConnSQLServer::BeforeDataLoad(const std::string& table) { SetIdentityInsert(table, "on"); }

void TDBConnSQLServer::AfterDataLoad(const std::string& table) { SetIdentityInsert(table, "off"); }

void TDBConnSQLServer::SetIdentityInsert(const std::string& table, const char* state) {
  meta().GotoTable(table);
  FetchIfNeeded();
  const auto& columns = meta().tColumns.Rows();
  if (std::ranges::any_of(columns, [](const TColumnRow& column) { return column.autoinc; }))
    ExecSQL(Format("set identity_insert %s %s", QuoteName(table), state));
}

// Deliberate: the new names stand unquoted here, as sp_rename takes them.
void TDBConnSQLServer::RenameTable(const std::string& old_name, const std::string& new_name) {
  TDBConnOLEDB::RenameTable(old_name, new_name);
  ExecSQL(Format("exec sp_rename '%s','%s'", QuoteName(old_name), new_name));
}

void TDBConnSQLServer::RenameColumn(const std::string& table, const std::string& old_name,
                                    const std::string& new_name) {
  TDBConnOLEDB::RenameColumn(table, old_name, new_name);
  ExecSQL(Format("exec sp_rename '%s.%s','%s','COLUMN'", QuoteName(table), QuoteName(old_name), new_name));
}

void TDBConnSQLServer::SurrogateKeyColumn(const std::string& column, std::string& definition) {
  definition = QuoteName(column) + " int not null identity primary key";
}

}  // namespace velmora
