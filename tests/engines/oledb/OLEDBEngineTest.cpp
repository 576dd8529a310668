// SPDX-License-Identifier: GPL-3.0-or-later

// What the OLE DB engines have in common, over a provider fed from tables; the engine of ODBC stands for all.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/Meta.h"
#include "engines/oledb/DBConnFoxPro.h"
#include "engines/oledb/DBConnODBC.h"
#include "support/FakeOLEDB.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using ::testing::ElementsAre;
using testing::MessageOf;
using testing::TFakeOLEDB;
using std::string_literals::operator""s;

class OLEDBEngineTest : public ::testing::Test {
 protected:
  std::string Fetch(TDBConn& conn, const std::string& table = "T") {
    return MessageOf([&] {
      if (!conn.GetConnected()) conn.Connect();
      backend.TakeLog();
      conn.meta().GotoTable(table);
      conn.FetchIfNeeded();
    });
  }

  std::string Told(TDBConn& conn) {
    std::string told;
    for (const TOLEDBTableRow& table : backend.tables)
      if (const std::string error = Fetch(conn, table.TABLE_NAME); error != "nothing raised")
        told += table.TABLE_NAME + ": " + error + "\n";
    return told + DumpMeta(conn.meta());
  }

  TFakeOLEDB backend;
  TDBConnODBC engine{"shop", backend.Maker()};
};

// --- Structure

// Tables that are read, and those that are not: what is in the store then, and what was said.
TEST_F(OLEDBEngineTest, ReadsTheTablesOfAProvider) {
  const std::string rowsets = VELMORA_SOURCE_DIR "/tests/engines/oledb/catalog/provider";
  backend.Answer(testing::ReadPlayedAnswers(rowsets + ".txt"));
  backend.tables.push_back({"a view", "VIEW"});
  backend.tables.push_back({"a table in small letters", "Table"});
  const std::string told = Told(engine);
  backend.tables = {{"all types", "TABLE"}, {"defaults", "TABLE"}, {"rich", "TABLE"}};
  TDBConnFoxPro foxpro("shop", backend.Maker());
  EXPECT_EQ(told + "\nFoxPro, which has no national types\n\n" + Told(foxpro), ReadFileText(rowsets + ".golden"));
  EXPECT_THAT(backend.log, ElementsAre("columns rich", "select top 1 * from [rich] order by 1", "indexes rich"));
}

// --- Connection

TEST_F(OLEDBEngineTest, ListsConnectAsTheyNeed) {
  backend.tables = {{"T", "TABLE"}};
  backend.catalogs = {"B", "a"};
  TStringList list{"old"};
  engine.ListTables(list);
  EXPECT_THAT(list, ElementsAre("T"));
  EXPECT_THAT(backend.TakeLog(), ElementsAre("open shop", "tables", "tables"));
  engine.ListDatabases(list);
  EXPECT_THAT(list, ElementsAre("B", "a"));
  EXPECT_THAT(backend.TakeLog(), ElementsAre("tables", "catalogs")) << "it connects anew, whatever the state";
  engine.Disconnect();
  EXPECT_EQ(DumpMeta(engine.meta()), "");
}

TEST_F(OLEDBEngineTest, ReconnectKeepsTheStore) {
  backend.AddTable("T", {"a"});
  EXPECT_EQ(Fetch(engine), "nothing raised");
  backend.TakeLog();
  engine.Reconnect();
  EXPECT_THAT(backend.TakeLog(), ElementsAre("close", "open shop"));
  EXPECT_EQ(DumpMeta(engine.meta()), "table T fetched\ncolumn a <I4>(0)\n");
  engine.Connect();
  EXPECT_EQ(DumpMeta(engine.meta()), "table T\n");
}

TEST_F(OLEDBEngineTest, ACloneHasTheStoreOrAConnection) {
  backend.AddTable("T", {"a"});
  EXPECT_EQ(Fetch(engine), "nothing raised");
  const std::unique_ptr<TDBConn> connected = engine.Clone();
  EXPECT_TRUE(connected->GetConnected());
  EXPECT_EQ(DumpMeta(connected->meta()), "table T\n");
  engine.GetConnectionObject().SetConnected(false);
  const std::unique_ptr<TDBConn> copy = engine.Clone();
  EXPECT_FALSE(copy->GetConnected());
  EXPECT_EQ(DumpMeta(copy->meta()), DumpMeta(engine.meta()));
}

TEST_F(OLEDBEngineTest, TransactionsBeginAndEndWellOnly) {
  engine.Connect();
  backend.TakeLog();
  engine.StartTransaction();
  engine.Commit();
  EXPECT_THAT(backend.TakeLog(), ElementsAre("begin 4096", "commit"));
  EXPECT_EQ(MessageOf([&] { engine.Rollback(); }), "NOT IMPLEMENTED");
  EXPECT_EQ(MessageOf([&] { engine.InTransaction(); }), "NOT IMPLEMENTED");
}

TEST_F(OLEDBEngineTest, QueriesCanMoveBothWays) {
  backend.Answer("select count(*) from [a b]", {""}, {{std::int64_t{7}}});
  backend.Answer("two", {"a"}, {{"1"}, {"2"}});
  backend.errors["bad"] = "Syntax error";
  engine.Connect();
  EXPECT_EQ(engine.GetRecordCount("a b"), 7);
  TVariant value;
  EXPECT_EQ(MessageOf([&] { engine.GetResultSQL("two", value); }), "ODBC.GetResultSQL: exactly one record expected");
  EXPECT_EQ(MessageOf([&] { engine.OpenQuery("bad"); }), "Syntax error");
  const std::unique_ptr<TDataset> rows = engine.OpenQuery("two");
  EXPECT_EQ(dynamic_cast<TOLEDBDataSet&>(*rows).Flags(), 15u);
  backend.TakeLog();
  engine.CloseTable(engine.OpenTable("a b"));
  EXPECT_THAT(backend.log, ElementsAre("select * from [a b]"));
}

// --- Texts

std::string Literal(TDBConn& conn, EFieldKind kind, const TVariant& value) {
  const TFieldDef def{"f", kind};
  std::string text;
  const std::string error = MessageOf([&] { conn.FieldValParam({def, value}, text); });
  return text.empty() ? error : text;
}

TEST_F(OLEDBEngineTest, ValuesAsLiterals) {
  using enum EFieldKind;
  const TDateTime day = EncodeDate(2001, 2, 3);
  const TVariant bytes = "\x00\x0a\xff"s;
  const struct {
    std::vector<EFieldKind> kinds;
    TVariant value;
    const char* text;
  } kCases[] = {
      {{String, Memo, Graphic, FmtMemo, FixedChar, WideString}, "it's"s, "'it''s'"},
      {{String}, ""s, "''"},
      {{SmallInt, Integer, Word, AutoInc, LargeInt}, std::int64_t{-7}, "-7"},
      {{Boolean}, true, "1"},
      {{Boolean}, std::int64_t{0}, "0"},
      {{Float, Currency, Bcd}, -0.5, "-0.5"},
      {{Float}, 1234567890123456789.0, "1.23456789012346E18"},
      {{Date, Time, DateTime, TimeStamp}, TMoment{day}, "'20010203'"},
      {{Date, Time, DateTime, TimeStamp}, TMoment{day + EncodeTime(4, 5, 6)}, "'20010203 04:05:06'"},
      {{Time}, TMoment{EncodeTime(4, 5, 6)}, "'18991230 04:05:06'"},
      {{Bytes, VarBytes, Blob, OraBlob, OraClob}, bytes, "0x000AFF"},
      {{Blob}, ""s, "0x"},
      {{String, Integer, Boolean, Float, Date, Blob, Guid, Other}, {}, "NULL"},
      {{Guid, Other}, "x"s, "TDBConnOLEDB.FieldValParam: Unsupported field type for field f"},
  };
  for (const auto& c : kCases)
    for (const EFieldKind kind : c.kinds) EXPECT_EQ(Literal(engine, kind, c.value), c.text) << FieldKindName(kind);
}

TMetaColumn MetaColumn(TNeutralType type, std::int64_t size, bool notnull = false, const std::string& value = {},
                       bool autoinc = false) {
  TMetaColumn column;
  column.datatype = type;
  column.size = size;
  column.notnull = notnull;
  column.default_ = value;
  column.autoinc = autoinc;
  return column;
}

TEST_F(OLEDBEngineTest, WritesColumnsAndConstraints) {
  const struct {
    TMetaColumn column;
    const char* text;
  } kCases[] = {
      {MetaColumn(ntI4, 0, true, "", true), "int not null identity"},
      {MetaColumn(ntI4, 0, false, "(0)"), "int default ((0))"},
      {MetaColumn(ntVarChar, 20, true, "'x'"), "varchar(20) not null default ('x')"},
      {MetaColumn(ntVarChar, -1), "varchar(-1)"},
      {MetaColumn(ntBytes, 9000), "image"},
      {MetaColumn(ntTimestamp, 0), "datetime"},
  };
  std::string text;
  for (const auto& c : kCases) {
    engine.ColumnDescription(c.column, true, text);
    EXPECT_EQ(text, c.text);
  }
  engine.ColumnDescription(kCases[2].column, false, text);
  EXPECT_EQ(text, "varchar");
  engine.no_defaults = true;
  engine.ColumnDescription(kCases[2].column, true, text);
  EXPECT_EQ(text, "varchar(20) not null");

  TMetaConstraint constraint;
  constraint.name = "fk";
  constraint.foreign_table = "p";
  constraint.local_columns = "a;b";
  constraint.foreign_columns = "x;y";
  for (int type = kPrimaryConstraint; type <= kDefaultConstraint; ++type) {
    constraint.constraint_type = type;
    engine.ConstraintDescription(constraint, true, text);
    EXPECT_EQ(text, type == 2 ? "constraint fk foreign key(a,b) references p(x,y)" : "") << type;
    engine.ConstraintDescription(constraint, false, text);
    EXPECT_EQ(text, type == 2 ? "fk" : "") << type;
  }
}

TEST_F(OLEDBEngineTest, SendsStatementsAndKeepsTheStoreTrue) {
  backend.AddTable("T", {"a", "b"});
  backend.indexes["T"] = {{"T", "k", false, false, 1, "a"}};
  backend.affected = 4;
  EXPECT_EQ(Fetch(engine), "nothing raised");
  std::string seen;
  engine.on_exec_sql = [&](const std::string& sql) { seen += sql + "|"; };
  EXPECT_EQ(engine.ExecSQL("x"), 4);
  EXPECT_EQ(seen, "x|");
  backend.TakeLog();
  engine.DropKey("T", "k");
  engine.DropColumn("T", "b");
  EXPECT_EQ(DumpMeta(engine.meta()), "table T fetched\ncolumn a <I4>(0)\n");
  engine.TruncateTable("T");
  EXPECT_TRUE(engine.meta().tTables.Current().fetched);
  engine.AddColumn("T", "c int");
  EXPECT_EQ(DumpMeta(engine.meta()), "table T\n");
  EXPECT_THAT(backend.TakeLog(), ElementsAre("drop index [T].[k]", "alter table [T] drop column b",
                                             "truncate table [T]", "alter table [T] add c int"));
  engine.meta().GotoTable("T");
  engine.FetchIfNeeded();
  engine.meta().tConstraints.Append().name = "f";
  engine.meta().tConstraints.Post();
  engine.DropConstraint("T", "f");
  engine.ModifyColumn("T", "a", "n", "int not null auto_increment");
  EXPECT_EQ(DumpMeta(engine.meta()), "table T\n");
  EXPECT_THAT(backend.TakeLog(), ElementsAre("columns T", "select top 1 * from [T] order by 1", "indexes T",
                                             "alter table [T] drop constraint [f]",
                                             "alter table [T] ALTER COLUMN [n] int not null identity"));
  engine.DropTable("T");
  EXPECT_EQ(MessageOf([&] { engine.CreateTable("n", {}); }), "To be created, table must have at least one column!");
  engine.CreateTable("n", {"a int", "key (a)"});
  EXPECT_THAT(backend.log,
              ElementsAre("drop table [T]", "create table [n](\r\n\ta int,\r\n\tkey (a)\r\n\r\n)", "tables"));
}

TEST_F(OLEDBEngineTest, CleansDefinitions) {
  const struct {
    const char *definition, *cleaned;
  } kCases[] = {
      {"c int not null auto_increment first", "c int not null identity"},
      {"c varchar(10) default 'x'", "c varchar(10) "},
      {"c varchar(10) default 'x' comment 'y' after b", "c varchar(10)  after b"},
      {"c int default 0", "c int default 0"},
      {"c varchar(10) default 'x", "c varchar(10) x"},
      {"c int comment 'default 'x''", "c int comment '"},
      {"c int firstly", "c intly"},
      {"c int FIRST Default 'x'", "c int FIRST Default 'x'"},
  };
  engine.Connect();
  for (const auto& c : kCases) {
    backend.TakeLog();
    backend.tables = {{"T", "TABLE"}};
    engine.Connect();
    engine.AddColumn("T", c.definition);
    EXPECT_EQ(backend.log.back(), "alter table [T] add "s + c.cleaned);
  }
}

}  // namespace
}  // namespace velmora
