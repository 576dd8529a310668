// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/DBConnMySQL.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "core/Meta.h"
#include "engines/mysql/DDLParser.h"
#include "engines/mysql/LoginRights.h"
#include "engines/mysql/MySQLText.h"
#include "engines/mysql/MySQLTypes.h"
#include "mysqlclient/MyWire.h"
#include "mysqlclient/mysqlUtil.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/ServerVersion.h"
#include "mysqltext/ViewOrdinals.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/MySqlFacts.h"
#include "util/Text.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr int kChunkRows = 10000;
constexpr char kInnoDB[] = "InnoDB";
constexpr char kNoCreationText[] = "There is no whole creation text of table %s";
constexpr char kNoColumns[] = "Table must have at least one column!";

// Of MySQL, for a primary key that it made by itself.
constexpr char kShowsGeneratedKeys[] = "/*!80030 , session show_gipk_in_create_table_and_information_schema=1 */";
constexpr char kTimestampsSayAll[] = "set session explicit_defaults_for_timestamp=1";
constexpr char kResultsAsTheyAre[] = "set session character_set_results=null";
constexpr char kOwnCollation[] =
    "select collation_connection from information_schema.views where table_schema = database() and table_name = ";
constexpr char kOwnQuery[] =
    "select view_definition from information_schema.views where table_schema = database() and table_name = ";
constexpr char kTakesCollation[] =
    "set @velmora_collation = @@session.collation_connection, session collation_connection = %s";
constexpr char kCollationAsItWas[] = "set session collation_connection = @velmora_collation";
// "Illegal mix of collations", of two values to many.
constexpr int kTwoCollations = 1267;
constexpr int kManyCollations = 1271;
constexpr char kResultsInOurLetters[] = "set session character_set_results=@@character_set_client";
constexpr char kNamesWithKinds[] = "show full tables";
// A trigger has its table's database; asked for by its own, servers would look through the tables of all databases.
// Their order says in which one they fire; servers of old, which have one of a kind, say 0. Of an event 1 stands there
// where its start is the moment in which it was made or altered: then its server wrote it.
constexpr char kNamesBesidesTables[] =
    "select trigger_name, 'trigger', action_order from information_schema.triggers "
    "where event_object_schema = database() union all "
    "select routine_name, routine_type, 0 from information_schema.routines where routine_schema = database() union all "
    "select event_name, 'event', ifnull(starts in (convert_tz(created, @@session.time_zone, time_zone), "
    "convert_tz(last_altered, @@session.time_zone, time_zone)), 0) "
    "from information_schema.events where event_schema = database()";

constexpr char kLibraries[] =
    " union all select library_name, 'library', 0 from information_schema.libraries where library_schema = database()";

// MySQL 9.7 Reference Manual, "CREATE LIBRARY Statement".
std::string NamesBesidesTables(const std::string& version) {
  constexpr int kFirstWithLibraries = 90200;
  const TServerVersion server = ReadServerVersion(version);
  const bool libraries = !server.mariadb && server.version >= kFirstWithLibraries;
  return std::string(kNamesBesidesTables) + (libraries ? kLibraries : "");
}

// The word for what a server lists with this type; none for tables.
std::string KindBesidesTables(const std::string& type) {
  if (type.ends_with("TABLE") || type == "SYSTEM VERSIONED") return {};
  return type.ends_with("VIEW") ? "view" : LowerText(type);
}

// Where a server shows the creation text of what is no table, and what it was made under; 0 where it shows none.
struct TShownObject {
  std::string_view kind;
  std::size_t text;
  std::size_t mode;
  std::size_t zone;
  std::size_t collation;
};
constexpr std::array<TShownObject, 9> kShownObjects = {{{"view", 1, 0, 0, 3},
                                                        {"sequence", 1, 0, 0, 0},
                                                        {"trigger", 2, 1, 0, 4},
                                                        {"procedure", 2, 1, 0, 4},
                                                        {"function", 2, 1, 0, 4},
                                                        {"package", 2, 1, 0, 4},
                                                        {"package body", 2, 1, 0, 4},
                                                        {"library", 2, 1, 0, 0},
                                                        {"event", 3, 1, 2, 5}}};

std::string ShowObjectStatement(const TOtherObject& object) {
  return Format("show create %s `%s`", object.kind, StrReplace(object.name, "`", "``"));
}

// Modes in which a server hides options of a table, quotes names and texts otherwise, reads defaults of today or of
// another age otherwise; and those that bring such modes along.
bool IsInexactMode(const std::string& mode) {
  return InList(mode, {"ANSI_QUOTES",
                       "NO_FIELD_OPTIONS",
                       "NO_KEY_OPTIONS",
                       "NO_TABLE_OPTIONS",
                       "NO_DIR_IN_CREATE",
                       "MYSQL40",
                       "MYSQL323",
                       "ANSI",
                       "DB2",
                       "MAXDB",
                       "MSSQL",
                       "ORACLE",
                       "POSTGRESQL",
                       "TRADITIONAL",
                       "NO_BACKSLASH_ESCAPES",
                       "PIPES_AS_CONCAT",
                       "HIGH_NOT_PRECEDENCE",
                       "REAL_AS_FLOAT",
                       "IGNORE_SPACE",
                       "EMPTY_STRING_IS_NULL",
                       "NO_ZERO_DATE",
                       "NO_ZERO_IN_DATE"});
}

// What would cut, replace or renumber data becomes an error, or is left as it is.
const TStringList& ExactModes() {
  static const TStringList kModes = {"STRICT_TRANS_TABLES", "STRICT_ALL_TABLES", "NO_ENGINE_SUBSTITUTION",
                                     "NO_AUTO_VALUE_ON_ZERO"};
  return kModes;
}

// What is none, or is cut off before its columns end, would be read as a table without them. Views come by the same
// way.
bool IsCreationText(const std::string& text) {
  constexpr std::string_view kCreate = "create";
  if (!SameText(text.substr(0, kCreate.size()), kCreate)) return false;
  const std::size_t open = text.find('(');
  if (open != std::string::npos) return text.find(')', open) != std::string::npos;
  return PosNoCase(" like ", text) != 0 || PosNoCase(" select ", text) != 0;
}

TStringList NamesOf(const std::vector<TOtherObject>& objects) {
  TStringList names;
  names.reserve(objects.size());
  for (const TOtherObject& object : objects) names.push_back(object.name);
  return names;
}

void Execute(const std::string& statement, TMyConnection& connection) {
  const std::unique_ptr<TMyQuery> query = connection.NewQuery();
  query->SQL = statement;
  query->Execute();
}

// The session's own mode without what is inexact.
std::string ExactSqlMode(const std::string& own) {
  TStringList modes = ExactModes();
  TStringList given;
  SplitPlain(',', own, given);
  for (const std::string& mode : given)
    if (!mode.empty() && !IsInexactMode(mode) && IndexOf(modes, mode) == kNotInList) modes.push_back(mode);
  return JoinList(modes, ",");
}

// A session that prints texts without loss. `next` are the statements that are run after these.
void SetUpExact(TMyConnection& connection, const TStringList& next) {
  std::vector<TVariant> row;
  MySqlQueryRow("select @@session.sql_mode", connection, row);
  // With a set of letters for results bytes would come as "?", and on MySQL some letters.
  const std::string modes =
      Format("set session sql_quote_show_create=1%s, session character_set_results=null, session sql_mode='%s'",
             kShowsGeneratedKeys, ExactSqlMode(VarToText(row.at(0))));
  TStringList expected = {modes, kTimestampsSayAll};
  expected.insert(expected.end(), next.begin(), next.end());
  connection.ExpectStatements(expected, true);
  Execute(modes, connection);
  // Texts say of every timestamp what it is; servers that do not let a session decide this go by their own rule.
  try {
    Execute(kTimestampsSayAll, connection);
  } catch (const EMySqlException&) {
    if (!connection.GetConnected()) throw;
  }
}

}  // namespace

TDBConnMySQL::TDBConnMySQL(std::unique_ptr<TMyConnection> connection, std::string server, int port,
                           std::string database, std::string username, std::string password)
    : connection_(std::move(connection)),
      server_(std::move(server)),
      database_(std::move(database)),
      username_(std::move(username)),
      password_(std::move(password)),
      port_(port) {
  connection_->BeforeConnect = [this] { ApplyParams(); };
  query_ = connection_->NewQuery();
}

// --- Connection

void TDBConnMySQL::Connect() {
  if (exact_texts_ && !connection_->GetConnected()) {
    connection_->SetConnected(true);
    SetUpExactSession();
  }
  TDBConn::Connect();
}

void TDBConnMySQL::Disconnect() {
  ForgetTexts();
  TDBConn::Disconnect();
}

void TDBConnMySQL::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/server", server_);
  store.xmlSetVal(path + "/database", database_);
  store.xmlSetVal(path + "/username", username_);
  store.xmlSetVal(path + "/password", password_);
  store.xmlSetInt(path + "/port", port_ == 0 && !IsLocalServer(server_) ? kMySqlPort : port_);
}

TMyConnection& TDBConnMySQL::GetConnectionObject() { return *connection_; }

void TDBConnMySQL::ApplyParams() { SetParams(*connection_); }

void TDBConnMySQL::SetParams(TMyConnection& connection) const {
  connection.Server = server_;
  connection.Port = port_;
  connection.Database = database_;
  connection.Username = username_;
  connection.Password = password_;
}

void TDBConnMySQL::GetDisplayName(std::string& text) {
  const std::string host = server_.empty() ? "localhost" : server_;
  text =
      port_ == kMySqlPort || port_ == 0 ? Format("%s.%s", host, database_) : Format("%s:%d.%s", host, port_, database_);
}

// What is asked of a database first is on its way before the answer to this has come.
void TDBConnMySQL::UseDatabase(const std::string& database) {
  database_ = database;
  connection_->Database = database;
  listed_.clear();
  meta().Clear();
  const std::string use = "use `" + StrReplace(database, "`", "``") + "`";
  connection_->ExpectStatements({use, kNamesWithKinds, NamesBesidesTables(ServerVersion())}, true);
  ExecSQL(use);
}

// --- Words of the dialect, rows, statements

void TDBConnMySQL::DateTimeLiteral(TDateTime value, std::string& text) { text = MySQLDateTimeLiteral(value); }

void TDBConnMySQL::AutoIncKeyword(std::string& text) { text = "auto_increment"; }

bool TDBConnMySQL::SupportsChunks(const std::string& /*table*/) { return true; }

std::unique_ptr<TDataset> TDBConnMySQL::OpenTableDataChunk(const std::string& table, std::int64_t first,
                                                           std::int64_t count) {
  return OpenQuery(Format("select * from %s limit %d,%d", QuoteName(table), first - 1, count));
}

std::unique_ptr<TDataset> TDBConnMySQL::OpenQuery(const std::string& sql) {
  std::unique_ptr<TMyQuery> query = connection_->NewQuery();
  if (fetch_in_chunks) {
    query->UniDirectional = true;
    query->FetchAll = false;
    query->FetchRows = kChunkRows;
  }
  query->SQL = sql;
  query->Open();
  return query;
}

int TDBConnMySQL::GetEngine() { return kEngineMySQL; }

void TDBConnMySQL::ParseDDL(const std::string& sql) { TDDLParser(*this).Parse(sql); }

std::int64_t TDBConnMySQL::ExecSQL(const std::string& sql) {
  TDBConn::ExecSQL(sql);
  ForgetTexts();
  query_->SQL = sql;
  query_->Execute();
  return query_->RowsAffected();
}

void TDBConnMySQL::QuoteOpen(std::string& text) { text = "`"; }

void TDBConnMySQL::QuoteClose(std::string& text) { text = "`"; }

void TDBConnMySQL::GetColumnTypes(TColumnTypeInfoArray& table) { table = MySQLColumnTypes(); }

void TDBConnMySQL::EscapeString(const std::string& text, std::string& escaped) { escaped = MySQLEscaped(text); }

// --- Names

void TDBConnMySQL::ListDatabases(TStringList& list) {
  connection_->SetConnected(false);
  ApplyParams();
  connection_->Database.clear();
  // The event would bring the database back, and one that does not exist could not be connected to.
  std::function<void()> before_connect = std::exchange(connection_->BeforeConnect, nullptr);
  RunGuarded(
      [this, &list] {
        connection_->SetConnected(true);
        MySqlQueryList("show databases", list, *connection_);
      },
      [this, &before_connect] {
        connection_->BeforeConnect = std::move(before_connect);
        connection_->SetConnected(false);
      });
}

void TDBConnMySQL::ListTables(TStringList& list) {
  if (exact_texts_)
    list = NamesOf(ListKinds());
  else
    MySqlQueryList("show tables", list, *connection_);
}

// All that "show tables" lists, kept for OtherObjects.
const std::vector<TOtherObject>& TDBConnMySQL::ListKinds() {
  listed_.clear();
  const std::unique_ptr<TDataset> rows = OpenQuery(kNamesWithKinds);
  for (; !rows->Eof(); rows->Next())
    listed_.push_back({KindBesidesTables(VarToText(rows->Value(1))), VarToText(rows->Value(0))});
  rows->Close();
  return listed_;
}

void TDBConnMySQL::NormalizeName(const std::string& name, std::string& normal) { normal = MySQLNormalName(name); }

// --- Transactions, copies

void TDBConnMySQL::StartTransaction() { connection_->StartTransaction(); }

void TDBConnMySQL::Commit() { connection_->Commit(); }

void TDBConnMySQL::Rollback() { connection_->Rollback(); }

bool TDBConnMySQL::InTransaction() { return connection_->InTransaction(); }

std::unique_ptr<TDBConn> TDBConnMySQL::Clone() { return ConnectedAsThis(NewEngine()); }

std::unique_ptr<TDBConnMySQL> TDBConnMySQL::NewEngine() const {
  return std::make_unique<TDBConnMySQL>(connection_->NewConnection(), server_, port_, database_, username_, password_);
}

// --- Structure to texts and back

void TDBConnMySQL::FetchTableStructure(const std::string& table) {
  meta().InvalidateTable(table);
  std::string ddl = meta().tTables.Current().cached_ddl;
  if (keeps_texts_ && ddl != kNoCachedDDL)
    kept_texts_[table] = ddl;
  else
    ShowCreateTable(table, ddl);
  ParseDDL(ddl);
}

void TDBConnMySQL::ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) {
  TDBConn::ColumnDescription(column, detailed, text);
  if (detailed) text += MySQLColumnAttributes(column, no_defaults);
}

void TDBConnMySQL::ParseColumnDescription(const std::string& text, TMetaColumn& column) {
  TDBConn::ParseColumnDescription(text, column);
}

void TDBConnMySQL::ConstraintDescription(const TMetaConstraint& constraint, bool detailed, std::string& text) {
  if (constraint.constraint_type != kForeignKeyConstraint)
    text.clear();
  else
    text = detailed ? MySQLForeignKey(constraint) : constraint.name;
}

void TDBConnMySQL::ConvertColumn(const TMetaColumn& source, TMetaColumn& column) {
  TDBConn::ConvertColumn(MySQLStandIn(source), column);
}

// --- Changing the structure

bool TDBConnMySQL::CanCreateTables() { return true; }

void TDBConnMySQL::BeforeDataLoad(const std::string& /*table*/) {
  if (table_type == kInnoDB) ExecSQL(kForeignKeyChecksOff);
}

void TDBConnMySQL::AfterDataLoad(const std::string& /*table*/) {
  if (table_type == kInnoDB) ExecSQL(kForeignKeyChecksOn);
}

void TDBConnMySQL::CreateTable(const std::string& table, const TStringList& definitions) {
  if (definitions.empty()) RaiseError(kNoColumns);
  ExecSQL(kForeignKeyChecksOff);
  ExecSQL(Format("create table %s(\r\n%s\r\n) type=%s", QuoteName(table), DefinitionLines(definitions), table_type));
  ExecSQL(kForeignKeyChecksOn);
  RefreshTableList();
}

void TDBConnMySQL::DropTable(const std::string& table) {
  const std::string statement = Format("drop table %s", QuoteName(table));
  TDBConn::DropTable(table);
  ExecSQL(kForeignKeyChecksOff);
  ExecSQL(statement);
  ExecSQL(kForeignKeyChecksOn);
}

void TDBConnMySQL::RenameTable(const std::string& old_name, const std::string& new_name) {
  const std::string statement = Format("alter table %s rename to %s", QuoteName(old_name), QuoteName(new_name));
  TDBConn::RenameTable(old_name, new_name);
  ExecSQL(statement);
}

void TDBConnMySQL::TruncateTable(const std::string& table) { ExecSQL(Format("truncate table %s", QuoteName(table))); }

void TDBConnMySQL::AddColumn(const std::string& table, const std::string& definition) {
  TDBConn::AddColumn(table, definition);
  ExecSQL(Format("alter table %s add %s", QuoteName(table), definition));
}

void TDBConnMySQL::DropColumn(const std::string& table, const std::string& column) {
  const std::string statement = Format("alter table `%s` drop `%s`", table, column);
  TDBConn::DropColumn(table, column);
  ExecSQL(statement);
}

void TDBConnMySQL::RenameColumn(const std::string& table, const std::string& old_name, const std::string& new_name) {
  TDBConn::RenameColumn(table, old_name, new_name);
  std::string definition;
  ColumnText(table, old_name, definition);
  ModifyColumn(table, old_name, new_name, definition);
}

void TDBConnMySQL::ModifyColumn(const std::string& table, const std::string& old_name, const std::string& new_name,
                                const std::string& definition) {
  TDBConn::ModifyColumn(table, old_name, new_name, definition);
  ExecSQL(
      Format("alter table %s change %s %s %s", QuoteName(table), QuoteName(old_name), QuoteName(new_name), definition));
  FetchTableStructure(table);
}

void TDBConnMySQL::DropKey(const std::string& table, const std::string& key) { TDBConn::DropKey(table, key); }

void TDBConnMySQL::DropConstraint(const std::string& table, const std::string& constraint) {
  TDBConn::DropConstraint(table, constraint);
}

void TDBConnMySQL::SurrogateKeyColumn(const std::string& column, std::string& definition) {
  definition = QuoteName(column) + " int not null auto_increment primary key first";
}

bool TDBConnMySQL::SupportsSurrogateKey() { return true; }

// --- Creation texts

void TDBConnMySQL::ShowCreateTable(const std::string& table, std::string& ddl) {
  std::string text;
  if (const auto kept = kept_texts_.find(table); kept != kept_texts_.end()) {
    text = kept->second;
  } else {
    std::vector<TVariant> row;
    text_readers_.QueryRow(ShowCreateStatement(table), *connection_, row);
    if (row.size() > 1) text = VarToText(std::move(row[1]));
    if (!IsCreationText(text)) RaiseError(Format(kNoCreationText, table));
  }
  // Who compares without loss keeps the texts: another copy of each would only take memory.
  if (!exact_texts_) {
    meta().GotoTable(table);
    meta().tTables.Amend().cached_ddl = text;
  }
  ddl = std::move(text);
}

std::string TDBConnMySQL::ShowCreateStatement(const std::string& table) {
  return "show create table " + QuoteName(exact_texts_ ? StrReplace(table, "`", "``") : table);
}

void TDBConnMySQL::ExpectCreationTexts(const TStringList& tables) {
  ForgetTexts();
  keeps_texts_ = !tables.empty();
  TStringList statements;
  statements.reserve(tables.size());
  for (const std::string& table : tables) statements.push_back(ShowCreateStatement(table));
  if (exact_texts_)
    text_readers_.Start(
        *connection_, [this] { return ExactConnection(); }, statements);
  else
    connection_->ExpectStatements(statements);
}

void TDBConnMySQL::PrepareExactTexts(bool exact) {
  if (std::exchange(exact_texts_, exact) || !exact || !connection_->GetConnected()) return;
  SetUpExactSession();
}

void TDBConnMySQL::SetUpExactSession() {
  // The lists are what takes its time: two servers may make theirs side by side.
  SetUpExact(*connection_, {kNamesWithKinds, NamesBesidesTables(ServerVersion())});
}

std::unique_ptr<TMyConnection> TDBConnMySQL::ExactConnection() const {
  std::unique_ptr<TMyConnection> another = connection_->NewConnection();
  SetParams(*another);
  another->SetConnected(true);
  SetUpExact(*another, {});
  return another;
}

std::vector<TOtherObject> TDBConnMySQL::OtherObjects() {
  std::vector<TOtherObject> objects;
  std::ranges::copy_if(exact_texts_ && !listed_.empty() ? listed_ : ListKinds(), std::back_inserter(objects),
                       [](const TOtherObject& listed) { return !listed.kind.empty(); });
  const std::unique_ptr<TDataset> rows = OpenQuery(NamesBesidesTables(ServerVersion()));
  for (; !rows->Eof(); rows->Next()) {
    TOtherObject& object = objects.emplace_back();
    object.kind = LowerText(VarToText(rows->Value(1)));
    object.name = VarToText(rows->Value(0));
    const auto number = static_cast<int>(TryStrToInt(VarToText(rows->Value(2))).value_or(0));
    if (object.kind == "event")
      object.servers_start = number != 0;
    else
      object.order = number;
  }
  rows->Close();
  ReadObjectTexts(objects);
  return objects;
}

TStringList TDBConnMySQL::KindsHidden() { return HiddenKinds(GrantsOfLogin(*connection_), database_); }

// Servers keep their texts in the set of whoever made them, so that here the results need ours.
void TDBConnMySQL::ReadObjectTexts(std::vector<TOtherObject>& objects) {
  if (objects.empty()) return;
  TStringList statements = {kResultsInOurLetters};
  for (const TOtherObject& object : objects) statements.push_back(ShowObjectStatement(object));
  connection_->ExpectStatements(statements);
  RunGuarded(
      [&] {
        ExecSQL(kResultsInOurLetters);
        for (TOtherObject& object : objects) ReadObject(object);
      },
      [this] {
        connection_->ExpectStatements({});
        if (connection_->GetConnected()) ExecSQL(kResultsAsTheyAre);
      });
}

// Its text stays empty where the login may not see it.
void TDBConnMySQL::ReadObject(TOtherObject& object) {
  try {
    ShowObject(object);
  } catch (const EMySqlException& error) {
    if (!connection_->GetConnected()) throw;
    const int number = error.Number();
    if (object.kind == "view" && number >= kTwoCollations && number <= kManyCollations) ReadInOwnCollation(object);
  }
}

void TDBConnMySQL::ShowObject(TOtherObject& object) {
  const auto* const shown = std::ranges::find(kShownObjects, object.kind, &TShownObject::kind);
  if (shown == kShownObjects.end()) return;
  std::vector<TVariant> row;
  MySqlQueryRow(ShowObjectStatement(object), *connection_, row);
  const auto value = [&row](std::size_t column) {
    return column > 0 && column < row.size() ? VarToText(row[column]) : std::string();
  };
  object.text = value(shown->text);
  if (object.kind == "view" && MayLackOrdinals(object.text)) object.text = TextWithOrdinals(object);
  if (shown->mode > 0 && shown->mode < row.size()) object.context.sql_mode = value(shown->mode);
  object.context.collation = value(shown->collation);
  object.context.time_zone = value(shown->zone);
}

// Empty where it can't be known what the view orders by.
std::string TDBConnMySQL::TextWithOrdinals(const TOtherObject& view) {
  std::vector<TVariant> row;
  MySqlQueryRow(kOwnQuery + QuotedText(view.name), *connection_, row);
  return row.empty() ? std::string() : WithOrdinals(view.text, VarToText(row[0])).value_or("");
}

// Servers show some views only to sessions of the collation in which they were made.
void TDBConnMySQL::ReadInOwnCollation(TOtherObject& view) {
  try {
    std::vector<TVariant> row;
    MySqlQueryRow(kOwnCollation + QuotedText(view.name), *connection_, row);
    if (row.empty()) return;
    ExecSQL(Format(kTakesCollation, QuotedText(VarToText(row[0]))));
    RunGuarded([&] { ShowObject(view); },
               [&] {
                 if (connection_->GetConnected()) ExecSQL(kCollationAsItWas);
               });
  } catch (const EMySqlException&) {
    if (!connection_->GetConnected()) throw;
  }
}

void TDBConnMySQL::ForgetTexts() {
  keeps_texts_ = false;
  kept_texts_.clear();
  text_readers_.Stop();
}

}  // namespace velmora
