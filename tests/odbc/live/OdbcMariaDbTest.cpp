// The provider over a real driver with a server behind it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engines/oledb/DBConnODBC.h"
#include "engines/oledb/SchemaTexts.h"
#include "odbc/OdbcProvider.h"
#include "support/LiveDatabase.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/OdbcSources.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::MessageOf;
using ::testing::Not;
using testing::TPrivateServer;

std::string TextOf(const TOLEDBColumnRow& c) {
  const std::string numbers =
      c.NUMERIC_PRECISION == 0 && c.NUMERIC_SCALE == 0
          ? ""
          : " (" + std::to_string(c.NUMERIC_PRECISION) + "," + std::to_string(c.NUMERIC_SCALE) + ")";
  return c.COLUMN_NAME + " " + std::to_string(c.DATA_TYPE) + "/" + std::to_string(c.COLUMN_FLAGS) +
         (c.CHARACTER_MAXIMUM_LENGTH == 0 ? "" : " " + std::to_string(c.CHARACTER_MAXIMUM_LENGTH)) + numbers +
         (c.IS_NULLABLE ? "" : " not null") + (c.COLUMN_DEFAULT ? " default " + *c.COLUMN_DEFAULT : "");
}

std::vector<std::string> ColumnTexts(const std::vector<TOLEDBColumnRow>& rows) {
  return testing::TextsOf(rows, TextOf);
}

class OdbcMariaDbTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    const std::string server = "Server=127.0.0.1\nUser=root\nPort=" + std::to_string(TPrivateServer::Shared().Port());
    const std::string driver = testing::OdbcDriverFile("libmaodbc.so");
    testing::AddOdbcSource("mariadb", driver, server + "\nDatabase=od_bc");
    testing::AddOdbcSource("mariadb-nowhere", driver, server);
    testing::AddOdbcSource("mariadb-refused", driver, server + "\nUser=nobody\nPassword=secret");
  }

  static std::unique_ptr<TOLEDBProvider> Opened(const std::string& source = "mariadb") {
    TInitString properties;
    properties.Set("Data Source", source);
    std::unique_ptr<TOLEDBProvider> provider = NewOdbcProvider(properties);
    provider->Initialize();
    return provider;
  }
  TStringList Tables(TOLEDBProvider& provider) {
    TStringList tables;
    for (const TOLEDBTableRow& row : provider.Tables()) tables.push_back(row.TABLE_NAME + " " + row.TABLE_TYPE);
    return tables;
  }

  testing::TLiveDatabase database_{"od_bc"};
};

TEST_F(OdbcMariaDbTest, CatalogsAndTables) {
  testing::TLiveDatabase alike("odXbc");
  database_.Run("create table a_b(x int)");
  database_.Run("create table `größe Ω` (x int)");
  database_.Run("create view v as select 1 one");
  database_.Run("create table od_bc.OnlyHere(x int)");
  alike.Run("create table other(x int)");
  const auto provider = Opened();
  EXPECT_THAT(provider->Catalogs(), ::testing::IsSupersetOf({"od_bc", "odXbc"}));
  testing::TLiveDatabase upper("OD_BC");  // which the driver takes for the same
  upper.Run("create table other(x int)");
  EXPECT_THAT(Tables(*provider), ElementsAre("a_b TABLE", "größe Ω TABLE", "OnlyHere TABLE", "v VIEW"));
  EXPECT_THAT(Tables(*Opened("mariadb-nowhere")), Contains("other TABLE")) << "without a database, those of all";
}

TEST_F(OdbcMariaDbTest, Columns) {
  database_.Run("create table a_b(only_here int)");
  database_.Run("create table aXb(z int)");
  database_.Run(
      "create table t(id int unsigned not null auto_increment primary key, ti tinyint, tu tinyint unsigned, "
      "s smallint unsigned, b bigint unsigned, bs bigint, m mediumint, d decimal(12,3) not null default 1.5, r float, "
      "f double, c char(5), v varchar(40) default 'x', t text, lt longtext, bi binary(3), vb varbinary(30), bl "
      "longblob, "
      "da date, tm time, dt datetime, ts timestamp null, y year, bt bit(1), bits bit(9), e enum('a','b'), nn int "
      "null)");
  const auto provider = Opened();
  EXPECT_THAT(ColumnTexts(provider->Columns("a_b")), ElementsAre("only_here 3/16 (10,0)"));
  EXPECT_THAT(ColumnTexts(provider->Columns("t")),
              ElementsAre("id 19/16 (10,0)", "ti 16/16 (3,0)", "tu 17/16 (3,0)", "s 18/16 (5,0)", "b 21/16 (20,0)",
                          "bs 20/16 (19,0)", "m 3/16 (7,0)", "d 131/16 (12,3) not null default 1.500", "r 4/16 (7,0)",
                          "f 5/16 (15,0)", "c 130/16 5", "v 130/0 40 default 'x'", "t 130/128 65535",
                          "lt 130/128 4294967295", "bi 128/16 3", "vb 128/0 30", "bl 128/128 4294967295",
                          "da 133/16 (10,0)", "tm 134/16 (8,0)", "dt 135/16 (19,0)", "ts 135/16 (19,0)",
                          "y 18/16 (4,0)", "bt 11/16 (1,0)", "bits 128/16 2", "e 130/16 1", "nn 3/16 (10,0)"))
      << "the driver takes a column that counts by itself for nullable";
  EXPECT_THAT(provider->Columns("nope"), IsEmpty());
}

TEST_F(OdbcMariaDbTest, Keys) {
  database_.Run("create table t(y int, x int, u varchar(10) unique, primary key(x, y), key n(u, x))");
  database_.Run("create table none(a int)");
  const auto provider = Opened();
  EXPECT_THAT(
      testing::IndexTexts(provider->Indexes("t")),
      ElementsAre("PRIMARY.1 x primary unique", "PRIMARY.2 y primary unique", "u.1 u unique", "n.1 u", "n.2 x"));
  EXPECT_THAT(provider->Indexes("none"), IsEmpty());
}

TEST_F(OdbcMariaDbTest, OddNames) {
  for (const char* name : {"it's \"so\"", "größe Ω", "a`b", "back\\slash", "50%_"}) {
    const std::string quoted = "`" + StrReplace(name, "`", "``") + "`";
    database_.Run("create table " + quoted + "(`spalte ``ü` int primary key)");
    database_.Run("insert into " + quoted + " values (7)");
    const auto provider = Opened();
    EXPECT_EQ(
        MessageOf([&] {
          EXPECT_EQ(ColumnTexts(provider->Columns(name)), TStringList({"spalte `ü 3/16 (10,0) not null"})) << name;
          EXPECT_EQ(testing::IndexTexts(provider->Indexes(name)), TStringList({"PRIMARY.1 spalte `ü primary unique"}))
              << name;
          const std::string sql = "select top 1 * from [" + std::string(name) + "] order by 1";
          EXPECT_EQ(provider->Open(sql).rows, TRowsOfValues({{std::int64_t{7}}})) << name;
        }),
        "nothing raised")
        << name;
  }
}

TEST_F(OdbcMariaDbTest, Rows) {
  const std::string letters = "zwölf Ω 😀";
  database_.Run(
      "create table t(id int unsigned not null auto_increment primary key, b bigint unsigned, d decimal(30,10), r "
      "float, "
      "f double, c char(5), v varchar(40), t longtext, bi binary(3), bl longblob, da date, tm time, dt datetime(6), y "
      "year, "
      "bt bit(1), bits bit(9), e enum('a','b'))");
  database_.Run(
      "insert into t values (4000000000, 18446744073709551615, 12345678901234567890.0123456789, 0.1, "
      "0.30000000000000004, 'ab', '" +
      letters +
      "', repeat('ä', 100000), x'00ff10', repeat(x'00', 300000), "
      "'2001-02-03', '04:05:06', '2001-02-03 04:05:06.5', 1999, 1, 257, 'b')");
  database_.Run("insert into t(b, da, tm, bt) values (0, '0000-00-00', '-01:00:00', 0)");
  const auto provider = Opened();
  const TOLEDBRowset rowset = provider->Open("select * from [t] order by bits desc");
  std::vector<EFieldKind> kinds;
  for (const TFieldDef& field : rowset.fields) kinds.push_back(field.kind);
  using enum EFieldKind;
  EXPECT_THAT(kinds, ElementsAre(AutoInc, LargeInt, Bcd, Float, Float, FixedChar, String, Memo, Bytes, Blob, Date, Time,
                                 DateTime, Word, Boolean, Bytes, FixedChar));
  EXPECT_TRUE(rowset.is_autoincrement[0]);
  EXPECT_FALSE(rowset.is_autoincrement[1]);
  ASSERT_EQ(rowset.rows.size(), 2U);
  const TMemDataset::TRow expected = {std::int64_t{4000000000},
                                      "18446744073709551615",
                                      "12345678901234567890.0123456789",
                                      0.1,
                                      0.30000000000000004,
                                      "ab",
                                      letters,
                                      StrReplace(std::string(100000, 'x'), "x", "ä"),
                                      std::string("\0\xFF\x10", 3),
                                      std::string(300000, '\0'),
                                      TMoment{EncodeDate(2001, 2, 3)},
                                      TMoment{EncodeTime(4, 5, 6)},
                                      TMoment{EncodeDate(2001, 2, 3) + EncodeTime(4, 5, 6) + 0.5 / 86400},
                                      std::int64_t{1999},
                                      true,
                                      std::string("\1\1", 2),
                                      "b"};
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_EQ(rowset.rows[0][i], expected[i])
        << rowset.fields[i].name << " " << CutChars(VarToText(rowset.rows[0][i]), 80);
  EXPECT_EQ(rowset.rows[1][10], TVariant());
  EXPECT_EQ(VarToText(rowset.rows[1][11]), "-01:00:00");
  EXPECT_EQ(rowset.rows[1][14], TVariant(false));
  EXPECT_EQ(rowset.rows[1][6], TVariant());
}

TEST_F(OdbcMariaDbTest, StatementsTransactionsErrors) {
  database_.Run("create table t(a int primary key)");
  const auto provider = Opened();
  EXPECT_EQ(provider->Execute("insert into [t] values (1), (2), (3)"), 3);
  EXPECT_EQ(provider->Execute("delete from [t] where a = 9"), 0);
  EXPECT_EQ(provider->Open("select top 2 * from [t] order by 1").rows.size(), 2U);
  provider->StartTransaction(4096);
  provider->Execute("insert into t values (4)");
  EXPECT_EQ(testing::Answer(database_.Connection(), "select count(*) from t"), "3");
  provider->Commit();
  EXPECT_EQ(testing::Answer(database_.Connection(), "select count(*) from t"), "4");
  provider->StartTransaction(4096);
  provider->Execute("delete from t");
  provider->Uninitialize();
  EXPECT_EQ(testing::Answer(database_.Connection(), "select count(*) from t"), "4");
  provider->Initialize();
  EXPECT_THAT(MessageOf([&] { provider->Execute("insert into t values (1)"); }), HasSubstr("Duplicate entry '1'"));
  EXPECT_THAT(MessageOf([&] { provider->Open("select * from [nöpe]"); }), HasSubstr("od_bc.nöpe' doesn't exist"));
  EXPECT_TRUE(provider->Initialized());
  EXPECT_THAT(MessageOf([] { Opened("mariadb-refused"); }),
              AllOf(HasSubstr("Access denied"), Not(HasSubstr("secret"))));
}

TEST_F(OdbcMariaDbTest, ADroppedConnection) {
  const auto provider = Opened();
  const std::string id = VarToText(provider->Open("select connection_id()").rows.at(0).at(0));
  database_.Run("kill " + id);
  EXPECT_THAT(MessageOf([&] { provider->Open("select 1"); }), HasSubstr("MariaDB"));
  EXPECT_FALSE(provider->Initialized());
  provider->Initialize();
  EXPECT_EQ(provider->Open("select 1").rows.size(), 1U);
}

TEST_F(OdbcMariaDbTest, Engine) {
  database_.Run(
      "create table `größe`(id int unsigned auto_increment primary key, n varchar(40) not null default 'x', d "
      "decimal(9,2) "
      "default 0, key k(n, d))");
  TDBConnODBC engine("mariadb");
  engine.Connect();
  engine.meta().GotoTable("größe");
  engine.FetchIfNeeded();
  EXPECT_EQ(testing::DumpMeta(engine.meta()), R"(table größe fetched
column id <UI4>(0) autoinc
column n <NVARCHAR>(40) notnull default='x'
column d <DECIMAL>(9,2) default=0.00
key PRIMARY(id) primary unique
key k(n,d)
)");
}

}  // namespace
}  // namespace velmora
