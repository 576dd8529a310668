// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/DBConnOracle.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "core/Meta.h"
#include "engines/server/OracleTypes.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kInvalidMode[] = "Invalid Oracle authentication mode!";
constexpr char kNoPrimaryIndex[] = "Oracle primary key constraint can not locate corresponding index!";
constexpr char kNoUniqueIndex[] = "Oracle unique key constraint can not locate corresponding index!";
constexpr char kUnhandledConstraint[] = "Unhandled constraint type: ";
constexpr char kNoColumns[] = "To be created, table must have at least one column!";
constexpr std::string_view kInRecycleBin = "BIN$";

// Deliberate: the name goes into these as it stands, so a table with an apostrophe in its name cannot be fetched.
constexpr char kColumnsQuery[] =
    "select column_name,data_type,char_length,data_length,data_precision,data_scale,nullable from user_tab_columns "
    "where table_name='%s'";
constexpr char kKeysQuery[] =
    "select ix.index_name,ix.uniqueness,col.column_name,col.descend from user_ind_columns col,user_indexes ix where "
    "ix.table_name(+)=col.table_name and ix.index_name(+)=col.index_name and ix.table_name='%s' order by "
    "ix.index_name,col.column_position ";
constexpr char kConstraintsQuery[] =
    "select con.table_name,con.constraint_name,con.constraint_type,con.r_constraint_name,con.search_condition,"
    "col.column_name,col.position, (select r_col.table_name from user_cons_columns r_col where "
    "r_col.position=col.position and r_col.constraint_name(+)=con.r_constraint_name) foreign_table, (select "
    "r_col.column_name from user_cons_columns r_col where r_col.position=col.position and "
    "r_col.constraint_name(+)=con.r_constraint_name) foreign_col from user_cons_columns col,user_constraints con where "
    "col.table_name(+)=con.table_name and col.constraint_name(+)=con.constraint_name and con.table_name='%s' order by "
    "con.constraint_name,col.position";
constexpr char kTablesQuery[] = "select * from user_tables order by 1";
constexpr char kChunkQuery[] =
    "select %s from (select rownum as tmpzqrownum,%s.* from %s order by 1) zqtmptbl where zqtmptbl.tmpzqrownum between "
    "%d and %d";

constexpr std::pair<std::string_view, int> kModes[] = {
    {"Normal", kOraNormal}, {"", kOraNormal}, {"SYSDBA", kOraSysDba}, {"SYSOPER", kOraSysOper}};

std::string TextOf(const TOraQuery& rows, std::string_view field) { return VarToText(rows.FieldByName(field).value); }

std::int64_t NumberOf(const TOraQuery& rows, std::string_view field) { return VarToInt(rows.FieldByName(field).value); }

}  // namespace

TDBConnOracle::TDBConnOracle(std::unique_ptr<TOraSession> session, std::string server, std::string username,
                             std::string password, std::string authmode, bool direct)
    : session_(std::move(session)),
      query_(*session_),
      script_(*session_),
      server_(std::move(server)),
      username_(std::move(username)),
      password_(std::move(password)),
      authmode_(std::move(authmode)),
      direct_(direct) {
  session_->BeforeConnect = [this] { ApplyParams(); };
  script_.OnError = [](const std::exception_ptr& error, const std::string& /*sql*/, EOraErrorAction& action) {
    action = EOraErrorAction::Abort;
    std::rethrow_exception(error);
  };
}

TDBConnOracle::~TDBConnOracle() = default;

// --- Connection

void TDBConnOracle::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/server", server_);
  store.xmlSetVal(path + "/username", username_);
  store.xmlSetVal(path + "/password", password_);
  store.xmlSetVal(path + "/authmode", authmode_);
  store.xmlSetBool(path + "/direct", direct_);
}

TOraSession& TDBConnOracle::GetConnectionObject() { return *session_; }

void TDBConnOracle::ApplyParams() {
  session_->Server = server_;
  session_->Username = username_;
  session_->Password = password_;
  session_->Options.Net = direct_;
  const auto* mode = std::ranges::find(kModes, authmode_, &std::pair<std::string_view, int>::first);
  if (mode == std::end(kModes)) RaiseError(kInvalidMode);
  session_->ConnectMode = mode->second;
}

void TDBConnOracle::GetDisplayName(std::string& text) { text = Format("%s@%s", username_, server_); }

// --- Words of the dialect, rows, statements

// Deliberate: the date stands without the blanks that its format has; the server takes it so.
void TDBConnOracle::DateTimeLiteral(TDateTime value, std::string& text) {
  const TDateParts parts = DecodeDateTime(value);
  const std::string date = Format("%04d%02d%02d", parts.year, parts.month, parts.day);
  const std::string time = Format("%02d:%02d:%02d", parts.hour, parts.minute, parts.second);
  text = time == "00:00:00" ? "TO_DATE('" + date + "','YYYY MM DD')"
                            : "TO_DATE('" + date + " " + time + "','YYYY MM DD HH24:MI:SS')";
}

void TDBConnOracle::AutoIncKeyword(std::string& text) { text = "identity"; }

bool TDBConnOracle::SupportsChunks(const std::string& /*table*/) { return true; }

std::unique_ptr<TDataset> TDBConnOracle::OpenTableDataChunk(const std::string& table, std::int64_t first,
                                                            std::int64_t count) {
  meta().GotoTable(table);
  meta().CheckFetched();
  TStringList columns;
  for (const TColumnRow& column : meta().tColumns.Rows()) columns.push_back(QuoteName(column.name));
  return OpenRows(
      Format(kChunkQuery, JoinList(columns, ","), QuoteName(table), QuoteName(table), first, first + count - 1));
}

std::unique_ptr<TDataset> TDBConnOracle::OpenQuery(const std::string& sql) { return OpenRows(sql); }

std::unique_ptr<TOraQuery> TDBConnOracle::OpenRows(const std::string& sql) {
  auto query = std::make_unique<TOraQuery>(*session_);
  query->SQL = sql;
  query->Open();
  return query;
}

int TDBConnOracle::GetEngine() { return kEngineOracle; }

// Deliberate: a ";" within a literal makes a script too; its splitter knows better than to cut there.
std::int64_t TDBConnOracle::ExecSQL(const std::string& sql) {
  TDBConn::ExecSQL(sql);
  if (sql.find(';') != std::string::npos) {
    script_.SQL = sql;
    script_.Execute();
    return 0;
  }
  query_.SQL = sql;
  query_.Execute();
  return query_.RowsAffected();
}

void TDBConnOracle::QuoteOpen(std::string& text) { text = "\""; }

void TDBConnOracle::QuoteClose(std::string& text) { text = "\""; }

void TDBConnOracle::GetColumnTypes(TColumnTypeInfoArray& table) { table = OracleColumnTypes(); }

// --- Names

void TDBConnOracle::ListDatabases(TStringList& list) { list.clear(); }

void TDBConnOracle::ListTables(TStringList& list) {
  const std::unique_ptr<TOraQuery> rows = OpenRows(kTablesQuery);
  list.clear();
  for (; !rows->Eof(); rows->Next()) list.push_back(VarToText(rows->Value(0)));
}

void TDBConnOracle::NormalizeName(const std::string& name, std::string& normal) {
  std::string text = name;
  std::ranges::replace(text, ' ', '_');
  normal = std::move(text);
}

// --- Transactions, copies

void TDBConnOracle::StartTransaction() { session_->StartTransaction(); }

void TDBConnOracle::Commit() { session_->Commit(); }

void TDBConnOracle::Rollback() { session_->Rollback(); }

bool TDBConnOracle::InTransaction() { return session_->InTransaction(); }

std::unique_ptr<TDBConn> TDBConnOracle::Clone() {
  return ConnectedAsThis(
      std::make_unique<TDBConnOracle>(session_->NewSession(), server_, username_, password_, authmode_, direct_));
}

// --- Structure to texts and back

void TDBConnOracle::FetchTableStructure(const std::string& table) {
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the argument may be a text of the store
  const std::string name = table;
  meta().InvalidateTable(name);
  meta().GotoTable(name);
  FetchColumns(name);
  FetchKeys(name);
  FetchConstraints(name);
}

void TDBConnOracle::FetchColumns(const std::string& table) {
  const std::unique_ptr<TOraQuery> rows = OpenRows(Format(kColumnsQuery, table));
  for (; !rows->Eof(); rows->Next()) {
    const std::int64_t characters = NumberOf(*rows, "char_length");
    TNeutralType datatype = ntUnknown;
    TNumber length, precision, scale;
    DecodeColumn(TextOf(*rows, "data_type"), characters > 0 ? characters : NumberOf(*rows, "data_length"),
                 NumberOf(*rows, "data_precision"), NumberOf(*rows, "data_scale"), datatype, length, precision, scale);
    TColumnRow& column = meta().tColumns.Append();
    column.name = TextOf(*rows, "column_name");
    column.notnull = TextOf(*rows, "nullable") == "N";
    column.datatype = datatype;
    column.size = length ? *length : precision.value_or(0);
    column.precision = static_cast<std::int32_t>(scale.value_or(0));
    meta().tColumns.Post();
  }
}

void TDBConnOracle::FetchKeys(const std::string& table) {
  const std::unique_ptr<TOraQuery> rows = OpenRows(Format(kKeysQuery, table));
  std::string last;
  for (; !rows->Eof(); rows->Next()) {
    if (std::string name = TextOf(*rows, "index_name"); name != last) {
      TKeyRow& key = meta().tKeys.Append();
      key.name = name;
      key.unique = TextOf(*rows, "uniqueness") == "UNIQUE";
      meta().tKeys.Post();
      last = std::move(name);
    }
    TKeyFieldRow& field = meta().tKeyFields.Append();
    field.column = TextOf(*rows, "column_name");
    field.order = TextOf(*rows, "descend") == "ASC" ? "A" : "D";
    meta().tKeyFields.Post();
  }
}

void TDBConnOracle::FetchConstraints(const std::string& table) {
  const std::unique_ptr<TOraQuery> rows = OpenRows(Format(kConstraintsQuery, table));
  std::string last;
  for (; !rows->Eof(); rows->Next()) {
    if (std::string name = TextOf(*rows, "constraint_name"); name != last) {
      StartConstraint(*rows, name);
      last = std::move(name);
    }
    TConstraintFieldRow& field = meta().tConstraintFields.Append();
    field.local_column = TextOf(*rows, "column_name");
    field.foreign_column = TextOf(*rows, "foreign_col");
    meta().tConstraintFields.Post();
  }
}

void TDBConnOracle::StartConstraint(TOraQuery& rows, const std::string& name) {
  TConstraintRow& constraint = meta().tConstraints.Append();
  constraint.name = name;
  const std::string type = TextOf(rows, "constraint_type");
  if (type == "P") {
    constraint.constraint_type = kPrimaryConstraint;
    MarkPrimaryKey(rows, name);
  } else if (type == "C") {
    constraint.constraint_type = kCheckConstraint;
    constraint.check_condition = TextOf(rows, "search_condition");
  } else if (type == "U") {
    constraint.constraint_type = kUniqueConstraint;
    MarkUniqueKey(name);
  } else if (type == "R") {
    constraint.constraint_type = kForeignKeyConstraint;
    constraint.foreign_table = TextOf(rows, "foreign_table");
  } else {
    RaiseError(kUnhandledConstraint + type);
  }
  meta().tConstraints.Post();
}

// Gathers the constraint's columns and looks for the unique key that has exactly these, in this order. Leaves the rows
// on the last one of the constraint, which is thereby the only one that becomes a field.
void TDBConnOracle::MarkPrimaryKey(TOraQuery& rows, const std::string& constraint) {
  TStringList columns;
  for (; !rows.Eof() && TextOf(rows, "constraint_name") == constraint; rows.Next())
    columns.push_back(TextOf(rows, "column_name"));
  rows.Prior();
  const std::string wanted = JoinList(columns, ";");
  auto& keys = meta().tKeys;
  for (keys.First(); !keys.Eof(); keys.Next()) {
    if (!keys.Current().unique || meta().KeyFieldList(";") != wanted) continue;
    keys.Edit().primary = true;
    keys.Post();
    return;
  }
  RaiseError(kNoPrimaryIndex);
}

void TDBConnOracle::MarkUniqueKey(const std::string& constraint) {
  auto& keys = meta().tKeys;
  if (!keys.LocateExact(constraint)) RaiseError(kNoUniqueIndex);
  keys.Edit().unique = true;
  keys.Post();
}

void TDBConnOracle::ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) {
  std::string whole;
  TDBConn::ColumnDescription(column, detailed, whole);
  if (detailed) {
    if (column.datatype == ntBytes) whole = whole.substr(0, whole.find('('));
    if (column.notnull) whole += " not null";
    if (!no_defaults && !column.default_.empty()) whole += " default \"" + column.default_ + "\"";
  }
  text = std::move(whole);
}

void TDBConnOracle::ParseColumnDescription(const std::string& /*text*/, TMetaColumn& /*column*/) {}

void TDBConnOracle::KeyDescription(const TMetaKey& key, bool detailed, std::string& text) {
  std::string whole;
  TDBConn::KeyDescription(key, detailed, whole);
  if (detailed && key.primary) {
    std::string table;
    NormalizeName(key.table, table);
    whole = "constraint pk_" + table + " " + whole;
  }
  text = std::move(whole);
}

// --- Changing the structure

void TDBConnOracle::CreateTable(const std::string& table, const TStringList& definitions) {
  if (definitions.empty()) RaiseError(kNoColumns);
  ExecSQL(Format("create table %s(\r\n%s\r\n)", QuoteName(table), DefinitionLines(definitions)));
  RefreshTableList();
}

void TDBConnOracle::DropTable(const std::string& table) {
  const std::string_view form = table.starts_with(kInRecycleBin) ? "purge table %s" : "drop table %s";
  const std::string statement = Format(form, QuoteName(table));
  TDBConn::DropTable(table);
  ExecSQL(statement);
}

void TDBConnOracle::SurrogateKeyColumn(const std::string& /*column*/, std::string& /*definition*/) {}

}  // namespace velmora
