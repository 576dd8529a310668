// The provider over a real driver that needs no server.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "engines/oledb/DBConnODBC.h"
#include "engines/oledb/SchemaTexts.h"
#include "odbc/OdbcProvider.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/OdbcSources.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::MessageOf;
using ::testing::UnorderedElementsAre;

constexpr char kOddTable[] = "größe \"q\" 'x' Ω";

std::string TextOf(const TOLEDBColumnRow& c) {
  return c.COLUMN_NAME + " " + std::to_string(c.DATA_TYPE) + "/" + std::to_string(c.COLUMN_FLAGS) + " " +
         std::to_string(c.CHARACTER_MAXIMUM_LENGTH) + (c.IS_NULLABLE ? "" : " not null") +
         (c.COLUMN_DEFAULT ? " default " + *c.COLUMN_DEFAULT : "");
}

std::vector<std::string> ColumnTexts(const std::vector<TOLEDBColumnRow>& rows) {
  return testing::TextsOf(rows, TextOf);
}

class OdbcSqliteTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    static const testing::TScratchFolder folder;
    path_ = folder / "shop.db";
    testing::AddOdbcSource("sqlite", testing::OdbcDriverFile("libsqlite3odbc.so"), "Database=" + path_);
    testing::AddOdbcSource("no-driver", "/nowhere/driver.so");
  }

  static std::unique_ptr<TOLEDBProvider> NewProvider(const std::string& source = "sqlite") {
    TInitString properties;
    properties.Set("Data Source", source);
    return NewOdbcProvider(properties);
  }

  void SetUp() override {
    std::filesystem::remove(path_);
    provider_->Initialize();
  }
  void Run(std::initializer_list<std::string> statements) {
    for (const std::string& statement : statements) provider_->Execute(statement);
  }

  static inline std::string path_;
  std::unique_ptr<TOLEDBProvider> provider_ = NewProvider();
};

TEST_F(OdbcSqliteTest, Catalog) {
  Run({"create table a_b(x int, y int, primary key(y, x))", "create table aXb(z int)",
       "create table items(id integer primary key autoincrement, name varchar(40) not null default 'x', c char(5), "
       "price decimal(10,2), big bigint unsigned, small smallint unsigned, t text, b blob, d date, tm time, "
       "ts timestamp, f float, bo boolean, ti tinyint)",
       "create index n1 on items(name, c)", "create view v as select 1 one",
       "create table \"größe \"\"q\"\" 'x' Ω\"(\"spalte ü\" int, b text unique)"});
  EXPECT_THAT(provider_->Catalogs(), IsEmpty());
  TStringList tables;
  for (const TOLEDBTableRow& row : provider_->Tables()) tables.push_back(row.TABLE_NAME + " " + row.TABLE_TYPE);
  EXPECT_THAT(tables, UnorderedElementsAre("a_b TABLE", "aXb TABLE", "items TABLE", "sqlite_sequence TABLE",
                                           std::string(kOddTable) + " TABLE", "v VIEW"));
  EXPECT_THAT(ColumnTexts(provider_->Columns("a_b")), ElementsAre("x 3/16 0", "y 3/16 0")) << "and none of aXb";
  EXPECT_THAT(ColumnTexts(provider_->Columns("items")),
              ElementsAre("id 3/16 0", "name 129/0 40 not null default x", "c 129/0 5", "price 129/0 2", "big 21/16 0",
                          "small 18/16 0", "t 129/128 0", "b 128/16 0", "d 133/16 0", "tm 134/16 0", "ts 135/16 0",
                          "f 5/16 0", "bo 11/16 0", "ti 16/16 0"));
  EXPECT_THAT(ColumnTexts(provider_->Columns(kOddTable)), ElementsAre("spalte ü 3/16 0", "b 129/128 0"));
  EXPECT_THAT(provider_->Columns("nope"), IsEmpty());
  EXPECT_THAT(testing::IndexTexts(provider_->Indexes("a_b")),
              ElementsAre("sqlite_autoindex_a_b_1.1 y primary unique", "sqlite_autoindex_a_b_1.2 x primary unique"));
  EXPECT_THAT(testing::IndexTexts(provider_->Indexes("items")),
              ElementsAre("sqlite_autoindex_0.1 id primary unique", "n1.1 name", "n1.2 c"));
  EXPECT_THAT(testing::IndexTexts(provider_->Indexes(kOddTable)),
              ElementsAre("sqlite_autoindex_" + std::string(kOddTable) + "_1.1 b primary unique"))
      << "the driver takes a unique column for the key where there is none";
}

TEST_F(OdbcSqliteTest, Rows) {
  const std::string letters = "zwölf Ω 😀";
  Run(
      {"create table t(id integer primary key autoincrement, name varchar(40), price decimal(10,2), big bigint, d "
       "date, "
       "tm time, ts timestamp, f float, bo boolean, b blob)",
       "insert into t values(7, '" + letters +
           "', '12.50', 9223372036854775807, '2001-02-03', '04:05:06', "
           "'2001-02-03 04:05:06', 0.1, 1, x'00ff10')",
       "insert into t(big, d, f) values('many', 'someday', null)"});
  const TOLEDBRowset rowset = provider_->Open("select top 1 * from [t] order by 1");
  std::vector<EFieldKind> kinds;
  for (const TFieldDef& field : rowset.fields) kinds.push_back(field.kind);
  using enum EFieldKind;
  EXPECT_THAT(kinds, ElementsAre(AutoInc, String, String, LargeInt, Date, Time, DateTime, Float, Boolean, Bytes));
  EXPECT_EQ(rowset.fields[1].size, 40);
  EXPECT_THAT(rowset.is_autoincrement,
              ElementsAre(true, false, false, false, false, false, false, false, false, false));
  ASSERT_EQ(rowset.rows.size(), 1U);
  const std::int64_t most = 9223372036854775807;
  const TMemDataset::TRow expected = {std::int64_t{7},
                                      letters,
                                      "12.5",
                                      most,
                                      TMoment{EncodeDate(2001, 2, 3)},
                                      TMoment{EncodeTime(4, 5, 6)},
                                      TMoment{EncodeDate(2001, 2, 3) + EncodeTime(4, 5, 6)},
                                      0.1,
                                      true,
                                      std::string("\0\xFF\x10", 3)};
  EXPECT_EQ(rowset.rows[0], expected);
  const TRowsOfValues rows = provider_->Open("select big, d, f from [t] where id = 8").rows;
  EXPECT_EQ(rows, TRowsOfValues({{"many", "someday", {}}})) << "what is not of the column's type stays text";
}

TEST_F(OdbcSqliteTest, LongValues) {
  Run({"create table t(a text, b blob)",
       "with recursive n(i) as (select 1 union all select i + 1 from n where i < 100000) "
       "insert into t select group_concat('ä', ''), zeroblob(300000) from n"});
  const TRowsOfValues rows = provider_->Open("select * from [t]").rows;
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(VarToText(rows[0][0]), StrReplace(std::string(100000, 'x'), "x", "ä"));
  EXPECT_EQ(VarToText(rows[0][1]), std::string(300000, '\0'));
}

TEST_F(OdbcSqliteTest, StatementsAndTransactions) {
  Run({"create table t(a int)"});
  EXPECT_EQ(provider_->Execute("insert into [t] values (1), (2)"), 2);
  EXPECT_EQ(provider_->Execute("delete from [t] where a = 5"), 0);
  const auto count = [&] { return VarToInt(provider_->Open("select count(*) from [t]").rows.at(0).at(0)); };
  provider_->StartTransaction(4096);
  provider_->Execute("insert into t values (3)");
  provider_->Commit();
  provider_->StartTransaction(4096);
  provider_->Execute("delete from t");
  provider_->Uninitialize();
  provider_->Initialize();
  EXPECT_EQ(count(), 3) << "rolled back";
}

TEST_F(OdbcSqliteTest, Errors) {
  Run({"create table t(a int unique)", "insert into t values (1)"});
  EXPECT_EQ(MessageOf([&] { provider_->Open("select * from [nope]"); }), "[SQLite]no such table: nope (1)");
  EXPECT_THAT(MessageOf([&] { provider_->Execute("insert into t values (1)"); }),
              HasSubstr("UNIQUE constraint failed: t.a"));
  EXPECT_TRUE(provider_->Initialized());
  EXPECT_EQ(MessageOf([] { NewProvider("nope")->Initialize(); }),
            "[unixODBC][Driver Manager]Data source name not found and no default driver specified\n"
            "There is no data source \"nope\" in odbc.ini; \"odbcinst -j\" tells which files are read");
  EXPECT_EQ(MessageOf([] { NewProvider("no-driver")->Initialize(); }),
            "[unixODBC][Driver Manager]Can't open lib '/nowhere/driver.so' : file not found");
  EXPECT_EQ(MessageOf([] { NewProvider(std::string(100000, 'x'))->Initialize(); }),
            "A text of 100000 bytes is too long for ODBC");
}

// The engine asks for the probe, the literals and the order of columns itself.
TEST_F(OdbcSqliteTest, Engine) {
  Run({"create table [größe Ω] (id integer primary key autoincrement, name nvarchar(40) not null default 'x', n int)",
       "create index i on [größe Ω] (n, name)", "insert into [größe Ω] values (1, 'zwölf', null)"});
  TDBConnODBC engine("sqlite");
  engine.Connect();
  std::string name;
  engine.GetDisplayName(name);
  EXPECT_EQ(name, "sqlite");
  TMeta& meta = engine.meta();
  meta.GotoTable("größe Ω");
  engine.FetchIfNeeded();
  EXPECT_EQ(testing::DumpMeta(meta), R"(table größe Ω fetched
column id <I4>(0) autoinc
column name <VARCHAR>(40) notnull default=x
column n <I4>(0)
key sqlite_autoindex_0(id) primary unique
key i(n,name)
table sqlite_sequence
)");
  const std::unique_ptr<TDataset> rows = engine.OpenTable("größe Ω");
  EXPECT_EQ(VarToText(rows->FieldByName("name").value), "zwölf");
}

TEST_F(OdbcSqliteTest, DataSources) {
  const std::unique_ptr<TDataset> sources = OdbcDataSources();
  ASSERT_EQ(sources->Fields().size(), 4U);
  TStringList names;
  FieldToList(*sources, "SOURCES_NAME", names);
  EXPECT_THAT(names, ::testing::IsSupersetOf({"sqlite", "no-driver"}));
  sources->First();
  EXPECT_EQ(VarToInt(sources->FieldByName("SOURCES_TYPE").value), 1);
}

TEST_F(OdbcSqliteTest, AMissingDriverForSQLServer) {
  EXPECT_EQ(
      MessageOf([] { NewSQLServerProvider(TInitString("Data Source=.;User ID=sa;Password=secret"))->Initialize(); }),
      "[unixODBC][Driver Manager]Can't open lib 'FreeTDS' : file not found "
      "(the ODBC driver for SQL Server is missing: install the package tdsodbc)");
}

}  // namespace
}  // namespace velmora
