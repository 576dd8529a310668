// What the OLE DB engines have in common, over a provider fed from tables; the engine of ODBC stands for all.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/Meta.h"
#include "engines/oledb/DBConnFoxPro.h"
#include "engines/oledb/DBConnODBC.h"
#include "support/FakeOLEDB.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"

namespace velmora {
namespace {

using testing::Column;
using testing::DumpMeta;
using ::testing::ElementsAre;
using testing::IndexColumn;
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

  TFakeOLEDB backend;
  TDBConnODBC engine{"shop", backend.Maker()};
};

// --- Structure

TEST_F(OLEDBEngineTest, ReadsATable) {
  std::vector<TOLEDBColumnRow> columns = {Column("ID", kDbTypeI4),         Column("PRICE", kDbTypeNumeric),
                                          Column("NAME", kDbTypeWStr, 30), Column("NOTE", kDbTypeStr),
                                          Column("YES", kDbTypeBool),      Column("RATIO", kDbTypeR8)};
  columns[0].IS_NULLABLE = false;
  columns[0].NUMERIC_PRECISION = 10;
  columns[1].NUMERIC_PRECISION = 9;
  columns[1].NUMERIC_SCALE = -2;
  columns[1].COLUMN_DEFAULT = "((0))";
  columns[4].COLUMN_DEFAULT = "=No";
  columns[5].NUMERIC_PRECISION = 15;
  backend.AddTable("T", columns,
                   {IndexColumn("PK", "ID", 1, true, true), IndexColumn("I", "NAME"), IndexColumn("I", "PRICE", 2)});
  backend.tables.push_back({"V", "VIEW"});
  backend.tables.push_back({"s", "Table"});
  TOLEDBRowset& probe = backend.answers["select top 1 * from [T] order by 1"];
  probe.fields = {{"PRICE"}, {"id"}};
  probe.is_autoincrement = {false, true};
  EXPECT_EQ(Fetch(engine), "nothing raised");
  EXPECT_EQ(DumpMeta(engine.meta()), R"(table T fetched
column ID <I4>(0) notnull autoinc
column PRICE <DECIMAL>(9,-2) default=((0))
column NAME <NVARCHAR>(30)
column NOTE <VARCHAR>(-1)
column YES <BOOL>(0) default=0
column RATIO <DOUBLE>(15,0)
key PK(ID) primary unique
key I(NAME,PRICE)
)");
  EXPECT_THAT(backend.log, ElementsAre("columns T", "select top 1 * from [T] order by 1", "indexes T"));
}

// A type of the provider becomes a neutral type, by its flags and with or without national types.
TEST_F(OLEDBEngineTest, TypesOfTheProvider) {
  constexpr std::uint32_t kFixed = kColumnIsFixedLength, kLong = kColumnIsLong;
  const struct {
    int data_type;
    std::uint32_t flags;
    const char *national, *plain;
  } kCases[] = {
      {2, kFixed, "<I2>", "<I2>"},
      {3, kFixed, "<I4>", "<I4>"},
      {4, kFixed, "<FLOAT>", "<FLOAT>"},
      {5, kFixed, "<DOUBLE>", "<DOUBLE>"},
      {6, kFixed, "<MONEY_mssql>", "<MONEY_mssql>"},
      {7, kFixed, "<DATE>", "<DATE>"},
      {8, kFixed, "<NCHAR>", "<CHAR>"},
      {8, kLong, "<NTEXT_mssql>", "<TEXT>"},
      {8, 0, "<NVARCHAR>", "<VARCHAR>"},
      {11, kFixed, "<BOOL>", "<BOOL>"},
      {14, kFixed, "<DECIMAL>", "<DECIMAL>"},
      {16, 0, "<I1>", "<I1>"},
      {17, 0, "<UI1>", "<UI1>"},
      {18, 0, "<UI2>", "<UI2>"},
      {19, 0, "<UI4>", "<UI4>"},
      {20, 0, "<I8>", "<I8>"},
      {21, 0, "<UI8>", "<UI8>"},
      {72, 0, "<UID_mssql>", "<UID_mssql>"},
      {128, kFixed, "<BYTES>", "<BYTES>"},
      {128, kLong, "<BYTES>", "<BYTES>"},
      {129, kFixed, "<CHAR>", "<CHAR>"},
      {129, kFixed | kLong, "<CHAR>", "<CHAR>"},
      {129, kLong | 1, "<TEXT>", "<TEXT>"},
      {129, 0, "<VARCHAR>", "<VARCHAR>"},
      {130, kFixed | kLong, "<NCHAR>", "<CHAR>"},
      {130, kLong, "<NTEXT_mssql>", "<TEXT>"},
      {130, 64, "<NVARCHAR>", "<VARCHAR>"},
      {131, 0, "<DECIMAL>", "<DECIMAL>"},
      {133, 0, "<DATE>", "<DATE>"},
      {134, 0, "<TIME>", "<TIME>"},
      {135, 0, "<TIMESTAMP_mssql>", "<TIMESTAMP_mssql>"},
  };
  std::vector<TOLEDBColumnRow> columns;
  for (const auto& c : kCases)
    columns.push_back(
        Column("c" + std::to_string(columns.size()), static_cast<std::uint16_t>(c.data_type), 9, c.flags));
  backend.AddTable("T", columns);
  for (const bool national : {true, false}) {
    TDBConnODBC conn("shop", backend.Maker());
    conn.NationalTypes = national;
    ASSERT_EQ(Fetch(conn), "nothing raised");
    ASSERT_EQ(conn.meta().tColumns.Rows().size(), std::size(kCases));
    auto row = conn.meta().tColumns.Rows().begin();
    for (const auto& c : kCases)
      EXPECT_EQ(NeutralTag((row++)->datatype), national ? c.national : c.plain) << c.data_type << " " << c.flags;
  }
}

TEST_F(OLEDBEngineTest, ColumnsGoByTheirOrdinals) {
  const struct {
    std::vector<std::uint32_t> ordinals;
    const char* columns;
  } kCases[] = {
      {{1, 2, 3}, "123"}, {{3, 2, 1}, "123"}, {{2, 3, 1}, "123"}, {{1, 2, 4}, "12"},
      {{2, 3}, ""},       {{0, 1}, "1"},      {{}, ""},           {{4294967295U, 1}, "1"},
  };
  for (const auto& c : kCases) {
    backend.columns["T"].clear();
    for (const std::uint32_t ordinal : c.ordinals) {
      TOLEDBColumnRow row = Column(std::to_string(ordinal), kDbTypeI4);
      row.TABLE_NAME = "T";
      row.ORDINAL_POSITION = ordinal;
      backend.columns["T"].push_back(row);
    }
    backend.tables = {{"T", "TABLE"}};
    TDBConnODBC conn("shop", backend.Maker());
    EXPECT_EQ(Fetch(conn), "nothing raised");
    std::string columns;
    for (const TColumnRow& row : conn.meta().tColumns.Rows()) columns += row.name;
    EXPECT_EQ(columns, c.columns) << ::testing::PrintToString(c.ordinals);
  }
}

TEST_F(OLEDBEngineTest, KeysGoByTheirOrdinals) {
  const struct {
    std::vector<TOLEDBIndexRow> rows;
    const char* keys;
  } kCases[] = {
      {{IndexColumn("i", "a", 2), IndexColumn("i", "b", 1)}, "key i(b)\n"},
      {{IndexColumn("i", "a", 1), IndexColumn("j", "b", 1), IndexColumn("i", "c", 2)}, "key i(a,c)\nkey j(b)\n"},
      {{IndexColumn("i", "a", 1), IndexColumn("I", "b", 2), IndexColumn("i", "c", 3)}, "key i(a)\n"},
      {{IndexColumn("i", "a", 2)}, ""},
      {{IndexColumn("i`", "a", 1)}, "key i()\n"},
      {{IndexColumn("i", "`a`", 1)}, "key i(a)\n"},
  };
  for (const auto& c : kCases) {
    TFakeOLEDB fresh;
    fresh.AddTable("T", {}, c.rows);
    TDBConnODBC conn("shop", fresh.Maker());
    EXPECT_EQ(Fetch(conn), "nothing raised");
    EXPECT_EQ(DumpMeta(conn.meta()), "table T fetched\n"s + c.keys);
  }
}

TEST_F(OLEDBEngineTest, DefaultsAreKeptButForTwo) {
  const struct {
    const char *text, *odbc, *foxpro;
  } kCases[] = {
      {"=No", "0", "0"},     {"=no", "=no", "=no"},    {"=Yes", "=Yes", "=Yes"},       {" =No", " =No", " =No"},
      {"'x'", "'x'", "'x'"}, {".NULL.", ".NULL.", ""}, {".null.", ".null.", ".null."},
  };
  for (const auto& c : kCases) {
    TFakeOLEDB fresh;
    TOLEDBColumnRow column = Column("a", kDbTypeStr);
    column.COLUMN_DEFAULT = c.text;
    fresh.AddTable("T", {column});
    TDBConnODBC odbc("shop", fresh.Maker());
    TDBConnFoxPro foxpro("shop", fresh.Maker());
    Fetch(odbc);
    Fetch(foxpro);
    EXPECT_EQ(odbc.meta().tColumns.Current().default_, c.odbc);
    EXPECT_EQ(foxpro.meta().tColumns.Current().default_, c.foxpro);
  }
}

TEST_F(OLEDBEngineTest, RefusesWhatItCannotRead) {
  const struct {
    void (*spoil)(TFakeOLEDB& backend);
    const char* message;
    const char* left;
  } kCases[] = {
      {[](TFakeOLEDB& b) { b.columns["T"][1].TABLE_NAME = "t"; }, "Wrong table in columns fetch!",
       "column a <I4>(0)\ncolumn b <I4>(0)\n"},
      {[](TFakeOLEDB& b) { b.columns["T"][0].TABLE_NAME = ""; }, "Wrong table in columns fetch!", ""},
      {[](TFakeOLEDB& b) { b.indexes["T"][0].TABLE_NAME = "TT"; }, "Wrong table in indexes fetch!",
       "column a <I4>(0)\ncolumn b <I4>(0)\n"},
      {[](TFakeOLEDB& b) { b.columns["T"][1].DATA_TYPE = 65535; }, "Unknown data type for column b in table T: 65535",
       "column a <I4>(0)\n"},
      {[](TFakeOLEDB& b) { b.columns["T"][1].COLUMN_NAME = "a"; }, "Duplicate column name: a", "column a <I4>(0)\n"},
      {[](TFakeOLEDB& b) { b.errors["columns T"] = "Link lost"; }, "Link lost", ""},
      {[](TFakeOLEDB& b) { b.errors["select top 1 * from [T] order by 1"] = "No such table"; }, "No such table", ""},
  };
  for (const auto& c : kCases) {
    TFakeOLEDB fresh;
    fresh.AddTable("T", {Column("a", kDbTypeI4), Column("b", kDbTypeI4)}, {IndexColumn("i", "a")});
    c.spoil(fresh);
    TDBConnODBC conn("shop", fresh.Maker());
    EXPECT_EQ(Fetch(conn), c.message);
    EXPECT_EQ(DumpMeta(conn.meta()), "table T\n"s + c.left) << c.message;
  }
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
  backend.AddTable("T", {Column("a", kDbTypeI4)});
  EXPECT_EQ(Fetch(engine), "nothing raised");
  backend.TakeLog();
  engine.Reconnect();
  EXPECT_THAT(backend.TakeLog(), ElementsAre("close", "open shop"));
  EXPECT_EQ(DumpMeta(engine.meta()), "table T fetched\ncolumn a <I4>(0)\n");
  engine.Connect();
  EXPECT_EQ(DumpMeta(engine.meta()), "table T\n");
}

TEST_F(OLEDBEngineTest, ACloneHasTheStoreOrAConnection) {
  backend.AddTable("T", {Column("a", kDbTypeI4)});
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
  backend.AddTable("T", {Column("a", kDbTypeI4), Column("b", kDbTypeI4)}, {IndexColumn("k", "a")});
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
