// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/DBConnMySQL.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/Meta.h"
#include "mysqlclient/mysqlUtil.h"
#include "support/FakeMyConnection.h"
#include "support/MessageOf.h"
#include "support/MetaBuilder.h"
#include "support/MetaDump.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using testing::MessageOf;
using testing::Shape;
using testing::TFakeMyConnection;
using testing::TFakeMyServer;
using namespace std::string_literals;

constexpr char kParent[] = "CREATE TABLE `p` (\n  `id` int(11) NOT NULL,\n  PRIMARY KEY (`id`)\n) ENGINE=InnoDB";
constexpr char kChild[] =
    "CREATE TABLE `c` (\n  `id` int(11) NOT NULL,\n  `p_id` int(11) default NULL,\n  KEY `k` (`p_id`),\n"
    "  CONSTRAINT `f` FOREIGN KEY (`p_id`) REFERENCES `p` (`id`) ON DELETE CASCADE\n) ENGINE=InnoDB";
constexpr char kAskParent[] = "open show create table `p`";

class DBConnMySQL : public ::testing::Test {
 protected:
  DBConnMySQL() {
    server->AddTable("p", kParent);
    server->AddTable("c", kChild);
  }

  std::unique_ptr<TDBConnMySQL> NewEngine(const std::string& host = "host", int port = 3306) {
    return std::make_unique<TDBConnMySQL>(std::make_unique<TFakeMyConnection>(server), host, port, "db", "user", "pw");
  }
  void Connect() {
    engine->Connect();
    server->TakeLog();
  }
  std::string CachedDDL() {
    engine->meta().GotoTable("p");
    return engine->meta().tTables.Current().cached_ddl;
  }
  std::string CreationText(const std::string& table) {
    std::string ddl;
    engine->ShowCreateTable(table, ddl);
    return ddl;
  }

  std::shared_ptr<TFakeMyServer> server = std::make_shared<TFakeMyServer>();
  std::unique_ptr<TDBConnMySQL> engine = NewEngine();
};

TMetaColumn Column(TNeutralType type, std::int64_t size = 0, std::int32_t precision = 0) {
  TMetaColumn column;
  column.table = "t";
  column.name = "a";
  column.datatype = type;
  column.size = size;
  column.precision = precision;
  return column;
}

TMetaColumn FullColumn() {
  TMetaColumn column = Column(ntI4);
  column.notnull = true;
  column.autoinc = true;
  column.default_ = "'0'";
  return column;
}

TMetaConstraint Constraint(std::int32_t type) {
  TMetaConstraint constraint;
  constraint.constraint_type = type;
  constraint.name = "f";
  constraint.foreign_table = "p";
  constraint.local_columns = "a;b";
  constraint.foreign_columns = "x;y";
  constraint.delete_rule = "cascade";
  return constraint;
}

// --- Operations that give a text

TEST_F(DBConnMySQL, GivesTexts) {
  const struct {
    void (*call)(TDBConnMySQL& engine, std::string& text);
    std::string text;
  } kTexts[] = {
      {[](auto& e, auto& t) { e.DateTimeLiteral(EncodeDate(2005, 1, 31) + EncodeTime(23, 5, 9), t); },
       "'2005-01-31 23:05:09'"},
      {[](auto& e, auto& t) { e.DateTimeLiteral(EncodeDate(2005, 1, 31), t); }, "'2005-01-31'"},
      {[](auto& e, auto& t) { e.DateTimeLiteral(0.5, t); }, "'1899-12-30 12:00:00'"},
      {[](auto& e, auto& t) { e.AutoIncKeyword(t); }, "auto_increment"},
      {[](auto& e, auto& t) { t = e.QuoteName("a b"); }, "`a b`"},
      {[](auto& e, auto& t) { t = e.QuoteName("a`b"); }, "`a`b`"},
      {[](auto& e, auto& t) { e.EscapeString("'\"\\\0\b\t\r\n\x1A%\xC3\xA9"s, t); },
       "''\\\"\\\\\\0\\b\\t\\r\\n\x1A%\xC3\xA9"},
      {[](auto& e, auto& t) { e.NormalizeName("a.b,c#d:e'f", t); }, "a_b_c_d_e_f"},
      {[](auto& e, auto& t) { e.SurrogateKeyColumn("id", t); }, "`id` int not null auto_increment primary key first"},
      {[](auto& e, auto& t) { e.ColumnDescription(FullColumn(), true, t); }, "int not null auto_increment default '0'"},
      {[](auto& e, auto& t) { e.ColumnDescription(FullColumn(), false, t); }, "int"},
      {[](auto& e, auto& t) { e.no_defaults = true, e.ColumnDescription(FullColumn(), true, t); },
       "int not null auto_increment"},
      {[](auto& e, auto& t) { e.ConstraintDescription(Constraint(kForeignKeyConstraint), true, t); },
       "constraint f foreign key(a,b) references p(x,y)"},
      {[](auto& e, auto& t) { e.ConstraintDescription(Constraint(kForeignKeyConstraint), false, t); }, "f"},
      {[](auto& e, auto& t) { e.ConstraintDescription(Constraint(kCheckConstraint), true, t); }, ""},
  };
  for (const auto& row : kTexts) {
    std::string text = "before";
    row.call(*NewEngine(), text);
    EXPECT_EQ(text, row.text);
  }
}

TEST_F(DBConnMySQL, ShowsItself) {
  for (const auto& [host, port, name] :
       {std::tuple("", 3306, "localhost.db"), {"h", 3306, "h.db"}, {"", 3307, "localhost:3307.db"}}) {
    std::string text;
    NewEngine(host, port)->GetDisplayName(text);
    EXPECT_EQ(text, name);
  }
  EXPECT_EQ(engine->GetEngine(), 8);
  EXPECT_TRUE(engine->CanCreateTables() && engine->SupportsChunks("t") && engine->SupportsSurrogateKey());
}

TEST_F(DBConnMySQL, ConvertsColumns) {
  const struct {
    TMetaColumn source;
    const char* text;
  } kColumns[] = {
      {Column(ntDouble), "decimal(53,4)"},
      {Column(ntDouble, 10, 2), "decimal(53,4)"},
      {Column(ntVarChar, 255), "varchar(255)"},
      {Column(ntVarChar, 256), "longtext"},
      {Column(ntNVarChar, 255), "national varchar(255)"},
      {Column(ntNVarChar, 256), "longtext"},
      {Column(ntUidMsSql), "varchar(38)"},
      {Column(ntMoneyMsSql), "decimal(19,4)"},
      {Column(ntSmallMoneyMsSql), "decimal(10,4)"},
      {Column(ntNTextMsSql), "longtext"},
      {Column(ntImageMsSql), "longblob"},
      {Column(ntSmallDateTimeMsSql), "datetime"},
      {Column(ntTimestampMsSql), "bigint"},
      {Column(ntDecimal, 10, 2), "decimal(10,2)"},
  };
  TMetaColumn column;
  for (const auto& row : kColumns) {
    std::string text;
    engine->ConvertColumn(row.source, column);
    engine->ColumnDescription(column, true, text);
    EXPECT_EQ(text, row.text) << NeutralTag(row.source.datatype) << row.source.size;
  }
  EXPECT_THROW(engine->ConvertColumn(Column(ntChar, 300), column), EVelmora);
}

// --- Operations that send statements

TEST_F(DBConnMySQL, SendsStatements) {
  const struct {
    void (*call)(TDBConnMySQL& engine);
    TStringList log;
  } kOperations[] = {
      {[](auto& e) { e.CloseTable(e.OpenTable("t`")); }, {"open select * from `t``"}},
      {[](auto& e) { e.OpenTableDataChunk("t", 1, 50); }, {"open select * from `t` limit 0,50"}},
      {[](auto& e) { e.ExecSQL("x %s"); }, {"exec x %s"}},
      {[](auto& e) { e.StartTransaction(), e.Commit(); }, {"start", "commit"}},
      {[](auto& e) { e.Rollback(); }, {"rollback"}},
      {[](auto& e) { e.BeforeDataLoad("t"); }, {"exec set foreign_key_checks=0"}},
      {[](auto& e) { e.AfterDataLoad("t"); }, {"exec set foreign_key_checks=1"}},
      {[](auto& e) { e.table_type = "innodb", e.BeforeDataLoad("t"), e.AfterDataLoad("t"); }, {}},
      {[](auto& e) {
         e.table_type = "MyISAM", e.CreateTable("t", {"a int", "b int not null"});
       },
       {"exec set foreign_key_checks=0", "exec create table `t`(\r\n\ta int,\r\n\tb int not null\r\n\r\n) type=MyISAM",
        "exec set foreign_key_checks=1", "open show tables"}},
      {[](auto& e) { e.CreateTable("t", {"a int"}); },
       {"exec set foreign_key_checks=0", "exec create table `t`(\r\n\ta int\r\n\r\n) type=InnoDB",
        "exec set foreign_key_checks=1", "open show tables"}},
      {[](auto& e) { e.DropTable("p"); },
       {"exec set foreign_key_checks=0", "exec drop table `p`", "exec set foreign_key_checks=1"}},
      {[](auto& e) { e.RenameTable("p", "q"); }, {"exec alter table `p` rename to `q`"}},
      {[](auto& e) { e.TruncateTable("p"); }, {"exec truncate table `p`"}},
      {[](auto& e) { e.AddColumn("p", "b int"); }, {"exec alter table `p` add b int"}},
      {[](auto& e) { e.DropColumn("p", "id"); }, {kAskParent, "exec alter table `p` drop `id`"}},
      {[](auto& e) { e.ModifyColumn("p", "id", "b", "int"); },
       {"exec alter table `p` change `id` `b` int", kAskParent}},
      {[](auto& e) { e.RenameColumn("p", "id", "b"); },
       {kAskParent, "exec alter table `p` change `id` `b` int not null", kAskParent}},
      {[](auto& e) { e.DropKey("p", "primary key"); }, {kAskParent}},
      {[](auto& e) { e.DropConstraint("c", "f"); }, {"open show create table `c`"}},
      {[](auto& e) {
         e.ExpectCreationTexts(TStringList{"p", "c"});
       },
       {"expect show create table `p`", "expect show create table `c`"}},
  };
  server->AddColumn("select * from `t``", {});
  server->AddColumn("select * from `t` limit 0,50", {});
  for (const auto& row : kOperations) {
    engine = NewEngine();
    Connect();
    row.call(*engine);
    EXPECT_EQ(server->TakeLog(), row.log);
  }
}

TEST_F(DBConnMySQL, FailsInTheMiddle) {
  Connect();
  EXPECT_EQ(MessageOf([&] { engine->CreateTable("t", {}); }), "Table must have at least one column!");
  EXPECT_TRUE(server->log.empty());
  server->Fail("drop table `p`", "denied");
  EXPECT_EQ(MessageOf([&] { engine->DropTable("p"); }), "denied");
  EXPECT_EQ(server->log, (TStringList{"exec set foreign_key_checks=0", "exec drop table `p`"})) << "and stays off";
}

TEST_F(DBConnMySQL, StructureStaysTrueToWhatWasSent) {
  Connect();
  TMeta& meta = engine->meta();
  engine->DropKey("p", "primary key");
  EXPECT_EQ(Shape(meta, "p"), "p(id)");
  meta.InvalidateTable("p");
  meta.CheckFetched();
  EXPECT_EQ(Shape(meta, "p"), "p(id) key primary key(id)") << "comes back with the next fetch";
  meta.FindColumn("c", "p_id");
  engine->DropColumn("c", "p_id");
  EXPECT_EQ(Shape(meta, "c"), "c(id)");
  engine->DropTable("p");
  EXPECT_FALSE(engine->TableExists("p"));
  engine->RenameTable("c", "d");
  EXPECT_EQ(DumpMeta(meta), "table d\n");
  engine->CreateTable("t", {"a int"});
  EXPECT_EQ(DumpMeta(meta), "table p\ntable c\n");
}

TEST_F(DBConnMySQL, TellsWhatItDoes) {
  Connect();
  server->rows_affected = 7;
  std::string told;
  engine->on_exec_sql = [&](const std::string& sql) { told = sql + (server->log.empty() ? " first" : " late"); };
  EXPECT_EQ(engine->ExecSQL("delete from t"), 7);
  EXPECT_EQ(told, "delete from t first");
  engine->StartTransaction();
  EXPECT_TRUE(engine->InTransaction());
  engine->Commit();
  EXPECT_FALSE(engine->InTransaction());
}

TEST_F(DBConnMySQL, ReadsInBlocksWhenAsked) {
  Connect();
  server->AddColumn("select 1", {"1"});
  engine->fetch_in_chunks = true;
  EXPECT_EQ(engine->OpenQuery("select 1")->RecordCount(), 1);
  EXPECT_EQ(server->log, (TStringList{"open in 10000 select 1"}));
}

// --- Connecting

TEST_F(DBConnMySQL, ConnectHandsOverParametersAndListsTables) {
  server->connect_error = "Access denied";
  EXPECT_EQ(MessageOf([&] { engine->Connect(); }), "Access denied");
  EXPECT_FALSE(engine->GetConnected());
  server->connect_error.clear();
  server->TakeLog();
  engine->Connect();
  EXPECT_EQ(server->TakeLog(), (TStringList{"connect host:3306 db user pw", "open show tables"}));
  EXPECT_EQ(DumpMeta(engine->meta()), "table p\ntable c\n");
  engine->Connect();
  EXPECT_EQ(server->TakeLog(), (TStringList{"open show tables"}));
  engine->Disconnect();
  EXPECT_FALSE(engine->GetConnected());
  EXPECT_EQ(DumpMeta(engine->meta()), "");
  Connect();
  engine.reset();
  EXPECT_EQ(server->log, (TStringList{"disconnect"}));
}

TEST_F(DBConnMySQL, ListsDatabasesWithoutOneAndEndsUnconnected) {
  server->AddColumn("show databases", {"a", "b"});
  TStringList list{"old"};
  Connect();
  engine->ListDatabases(list);
  EXPECT_EQ(list, (TStringList{"a", "b"}));
  EXPECT_EQ(server->TakeLog(),
            (TStringList{"disconnect", "connect host:3306  user pw", "open show databases", "disconnect"}));
  server->Fail("show databases", "denied");
  EXPECT_EQ(MessageOf([&] { engine->ListDatabases(list); }), "denied");
  EXPECT_EQ(list, (TStringList{"a", "b"}));
  EXPECT_FALSE(engine->GetConnected());
  server->TakeLog();
  engine->Connect();
  EXPECT_EQ(server->log.front(), "connect host:3306 db user pw");
}

TEST_F(DBConnMySQL, CloneOfAConnectedEngineHoldsNamesOnly) {
  Connect();
  engine->meta().FindColumn("p", "id");
  server->TakeLog();
  const std::unique_ptr<TDBConn> clone = engine->Clone();
  EXPECT_EQ(server->log, (TStringList{"connect host:3306 db user pw", "open show tables"}));
  EXPECT_EQ(DumpMeta(clone->meta()), "table p\ntable c\n");
  EXPECT_EQ(Shape(engine->meta(), "p"), "p(id) key primary key(id)");
}

TEST_F(DBConnMySQL, CloneOfAnUnconnectedEngineKeepsTheStoreAndTheOptions) {
  engine->ParseDDL(kParent);
  engine->GetConnectionObject().ConnectionTimeout = 3;
  const std::unique_ptr<TDBConn> clone = engine->Clone();
  EXPECT_TRUE(server->log.empty());
  EXPECT_EQ(DumpMeta(clone->meta()), DumpMeta(engine->meta()));
  EXPECT_EQ(dynamic_cast<TDBConnMySQL&>(*clone).GetConnectionObject().ConnectionTimeout, 3);
  EXPECT_EQ(dynamic_cast<TDBConnMySQL&>(*clone).password(), "pw");
}

// --- Fetching

TEST_F(DBConnMySQL, FetchedTableIsANewRowAtTheEnd) {
  for (const char* line_end : {"\n", "\r\n"}) {
    server->AddTable("p", StrReplace(kParent, "\n", line_end));
    server->AddTable("c", StrReplace(kChild, "\n", line_end));
    engine = NewEngine();
    Connect();
    TMeta& meta = engine->meta();
    meta.GotoTable("p");
    const int id = meta.tTables.Current().id;
    meta.CheckFetched();
    EXPECT_EQ(meta.tTables.Current().name, "p");
    EXPECT_NE(meta.tTables.Current().id, id);
    EXPECT_EQ(DumpMeta(meta),
              "table c\n"
              "table p InnoDB fetched\n"
              "column id <I4>(11) notnull\n"
              "key primary key(id) primary unique\n");
    meta.FindColumn("c", "id");
    EXPECT_EQ(Shape(meta, "c"), "c(id,p_id) key k(p_id) fk f(p_id:id)->p");
    meta.InvalidateTable("p");
    meta.FindColumn("p", "id");
    EXPECT_EQ(Shape(meta, "c"), "c(id,p_id) key k(p_id)") << "a fetch takes foreign keys to the table out of the store";
  }
}

TEST_F(DBConnMySQL, CreationTextIsKeptUntilTheFetch) {
  Connect();
  TMeta& meta = engine->meta();
  std::string ddl;
  meta.CachedTableDDL("p", ddl);
  EXPECT_EQ(ddl, kParent);
  meta.InvalidateTable("p");
  EXPECT_EQ(CachedDDL(), kParent);
  meta.FindColumn("p", "id");
  EXPECT_EQ(CachedDDL(), kNoCachedDDL);
  server->TakeLog();
  meta.CachedTableDDL("p", ddl);
  meta.CachedTableDDL("p", ddl);
  EXPECT_EQ(server->log, (TStringList{kAskParent}));
}

// A comparison reads most creation texts of changed tables several times; the server is asked once.
TEST_F(DBConnMySQL, CreationTextsAreKeptWhileAComparisonExpectsThem) {
  engine->Connect();
  const auto compare = [&](bool expects) {
    engine->Reconnect();
    if (expects) engine->ExpectCreationTexts({"p"});
    server->TakeLog();
    std::string ddl;
    engine->meta().CachedTableDDL("p", ddl);
    engine->meta().FindColumn("p", "id");  // a fetched table has lost its text
    engine->meta().CachedTableDDL("p", ddl);
    EXPECT_EQ(ddl, kParent);
    return server->TakeLog();
  };
  EXPECT_EQ(compare(false), (TStringList{kAskParent, kAskParent, kAskParent}));
  const std::function<void()> ends[] = {[&] { engine->ExecSQL("set x=1"); }, [&] { engine->Reconnect(); },
                                        [&] { engine->ExpectCreationTexts({}); }};
  for (const auto& end : ends) {
    EXPECT_EQ(compare(true), TStringList{kAskParent});
    CreationText("p");
    EXPECT_TRUE(server->log.empty()) << "kept";
    end();
    server->TakeLog();
    CreationText("p");
    EXPECT_EQ(server->TakeLog(), TStringList{kAskParent});
  }
}

TEST_F(DBConnMySQL, FailedCreationTextLeavesTheResultAlone) {
  Connect();
  server->Fail("show create table `p`", "gone");
  std::string ddl = "before";
  EXPECT_EQ(MessageOf([&] { engine->ShowCreateTable("p", ddl); }), "gone");
  const TMemDataset::TRow rows[] = {
      {"c"s}, {"c"s, TVariant()}, {"c"s, ""s}, {"c"s, "CREATE TABL"s}, {"c"s, "CREATE TABLE `c` (\n  `id` int"s}};
  for (const TMemDataset::TRow& row : rows) {
    server->answers["show create table `c`"] = {std::vector<TFieldDef>(row.size(), TFieldDef{"x"}), {row}, ""};
    EXPECT_EQ(MessageOf([&] { engine->ShowCreateTable("c", ddl); }), "There is no whole creation text of table c");
  }
  EXPECT_EQ(ddl, "before");
}

// What is set up on a server whose creation texts are to be read without loss.
TEST_F(DBConnMySQL, ExactTextsAreSetUpOnceForEachConnection) {
  const TStringList set_up = {
      "open select @@session.sql_mode",
      "exec set session sql_quote_show_create=1/*!80030 , session "
      "show_gipk_in_create_table_and_information_schema=1 */, session character_set_results=null, session "
      "sql_mode='STRICT_TRANS_TABLES,STRICT_ALL_TABLES,NO_ENGINE_SUBSTITUTION,NO_AUTO_VALUE_ON_ZERO,"
      "ERROR_FOR_DIVISION_BY_ZERO'",
      "exec set session explicit_defaults_for_timestamp=1"};
  server->AddColumn("select @@session.sql_mode",
                    {"ANSI_QUOTES,MYSQL40,NO_FIELD_OPTIONS,STRICT_TRANS_TABLES,NO_ZERO_IN_DATE,NO_ZERO_DATE,"
                     "ERROR_FOR_DIVISION_BY_ZERO,TRADITIONAL,NO_BACKSLASH_ESCAPES"});
  Connect();
  server->answers["show full tables"] = {
      {TFieldDef{"a"}, TFieldDef{"b"}}, {{"a"s, "BASE TABLE"s}, {"v"s, "VIEW"s}}, ""};
  const auto asked = [this] {
    TStringList log = server->TakeLog();
    std::erase_if(log, [](const std::string& line) { return line.starts_with("expect "); });
    return log;
  };
  engine->PrepareExactTexts();
  engine->PrepareExactTexts();
  EXPECT_EQ(asked(), set_up);
  engine->Reconnect();
  const TStringList anew = asked();
  EXPECT_EQ(anew.back(), "open show full tables") << "read in the session that was set up";
  EXPECT_EQ(TStringList(anew.begin() + 2, anew.end() - 1), set_up);
  engine->PrepareExactTexts(false);
  engine->Reconnect();
  EXPECT_EQ(server->TakeLog().size(), 3u) << "disconnect, connect, show tables";
}

// As many as are allowed, worth their login, and let in.
TEST_F(DBConnMySQL, ManyTextsAreReadBySeveralConnections) {
  struct TCase {
    int allowed;
    std::size_t tables;
    const char* refusal;
    std::ptrdiff_t further;
  };
  server->AddColumn("select @@session.sql_mode", {""});
  server->answers["show full tables"] = {{TFieldDef{"a"}, TFieldDef{"b"}}, {}, ""};
  TStringList tables;
  for (int i = 0; i < 1200; ++i) {
    tables.push_back("t" + std::to_string(i));
    server->AddTable(tables.back(), "create table " + tables.back() + " (a int)");
  }
  for (const TCase& one : {TCase{1, 1200, "", 0}, TCase{2, 1200, "", 1}, TCase{8, 1200, "", 2}, TCase{8, 400, "", 0},
                           TCase{8, 1200, "Too many connections", 0}}) {
    SCOPED_TRACE(::testing::Message() << one.allowed << " " << one.tables << " " << one.refusal);
    auto connection = std::make_unique<TFakeMyConnection>(server);
    connection->Options.Connections = one.allowed;
    engine = std::make_unique<TDBConnMySQL>(std::move(connection), "host", 3306, "db", "user", "pw");
    engine->PrepareExactTexts();
    engine->Connect();
    server->TakeLog();
    server->connect_error = one.refusal;
    engine->ExpectCreationTexts({tables.begin(), tables.begin() + static_cast<std::ptrdiff_t>(one.tables)});
    server->connect_error.clear();
    const TStringList log = server->TakeLog();
    EXPECT_EQ(std::ranges::count(log, "exec set session explicit_defaults_for_timestamp=1"), one.further);
    for (const std::string& table : tables) EXPECT_EQ(CreationText(table), "create table " + table + " (a int)");
    engine->ExpectCreationTexts({});
    EXPECT_EQ(std::ranges::count(server->TakeLog(), "disconnect"), one.further);
  }
}

// The default dialect has never done it, and for what it reads from files it would be wrong.
TEST_F(DBConnMySQL, ExactTextsAreAskedForWithBackticksDoubled) {
  server->AddColumn("select @@session.sql_mode", {""});
  server->AddTable("a`b", "create table `a``b` (a int)");
  server->answers["show create table `a``b`"] = server->answers["show create table `a`b`"];
  Connect();
  CreationText("a`b");
  engine->PrepareExactTexts();
  CreationText("a`b");
  const TStringList log = server->TakeLog();
  EXPECT_EQ(log.front(), "open show create table `a`b`");
  EXPECT_EQ(log.back(), "open show create table `a``b`");
}

// --- mysqlUtil

TEST_F(DBConnMySQL, ShortQueries) {
  TFakeMyConnection connection(server);
  connection.SetConnected(true);
  server->answers["q"] = {{TFieldDef{"a"}, TFieldDef{"b"}},
                          {{"x"s, std::int64_t{1}}, {TVariant(), TVariant()}, {"z"s, std::int64_t{3}}},
                          ""};
  server->AddColumn("none", {});

  std::vector<TVariant> row(5);
  EXPECT_EQ(MySqlQueryRow("q", connection, row), 3);
  EXPECT_EQ(row, (std::vector<TVariant>{"x"s, std::int64_t{1}}));
  EXPECT_EQ(MySqlQueryRow("none", connection, row), 0);
  EXPECT_EQ(row, (std::vector<TVariant>(1)));

  TStringList list{"old"};
  std::vector<std::int64_t> objects{9};
  MySqlQueryList("q", list, connection, &objects);
  EXPECT_EQ(list, (TStringList{"x", "", "z"}));
  EXPECT_EQ(objects, (std::vector<std::int64_t>{1, 0, 3}));
  MySqlQueryList("q", list, connection);  // which of two columns takes the first
  EXPECT_EQ(list.size(), 3U);
  MySqlQueryList("none", list, connection, &objects);
  EXPECT_TRUE(list.empty() && objects.empty());
}

}  // namespace
}  // namespace velmora
