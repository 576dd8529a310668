#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/Meta.h"
#include "engines/oledb/DBConnSQLServer.h"
#include "engines/oledb/SQLServerCatalog.h"
#include "support/FakeOLEDB.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "util/Files.h"
#include "util/Text.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using ::testing::ElementsAre;
using testing::MessageOf;
using std::string_literals::operator""s;

const TVariant kNull;
TVariant N(std::int64_t number) { return number; }

// A catalog query as it is to be sent; "%s" stands for the name in the files.
std::string Wanted(const char* query, const std::string& name) {
  const std::string text = ReadFileText(VELMORA_SOURCE_DIR "/tests/engines/oledb/catalog/"s + query + ".sql");
  return StrReplace(Trim(text), "%s", name);
}

TEST(SQLServerCatalogTest, AsksLetterForLetter) {
  for (const char* name : {"T", "it''s %d %s"}) {
    EXPECT_EQ(ColumnsQuery(name), Wanted("columns", name));
    EXPECT_EQ(KeysQuery(name), Wanted("keys", name));
    EXPECT_EQ(ConstraintsQuery(name), Wanted("constraints", name));
  }
}

class SQLServerEngineTest : public ::testing::Test {
 protected:
  SQLServerEngineTest() {
    backend.tables = {{"T", "TABLE"}};
    engine.Connect();
    const TStringList columns = {"COLUMN_NAME",       "IS_NULLABLE",   "COLUMN_DEFAULT",           "DATA_TYPE",
                                 "NUMERIC_PRECISION", "NUMERIC_SCALE", "CHARACTER_MAXIMUM_LENGTH", "IsIdentity"};
    backend.Answer(ColumnsQuery("T"), columns, {});
    TStringList keys = {"name", "IsUnique", "IsClustered"};
    TStringList constraints = {"name", "col", "status", "text", "fgntable"};
    for (int i = 1; i <= 16; ++i) {
      keys.insert(keys.end(), {"col" + std::to_string(i), "col" + std::to_string(i) + "_desc"});
      constraints.insert(constraints.end(), {"loccol" + std::to_string(i), "fgncol" + std::to_string(i)});
    }
    backend.Answer(KeysQuery("T"), keys, {});
    backend.Answer(ConstraintsQuery("T"), constraints, {});
    backend.TakeLog();
  }

  void Add(const std::string& query, TMemDataset::TRow row) {
    row.resize(backend.answers[query].fields.size());
    backend.answers[query].rows.push_back(std::move(row));
  }
  void AddKey(TMemDataset::TRow row) { Add(KeysQuery("T"), std::move(row)); }
  void AddConstraint(TMemDataset::TRow row) { Add(ConstraintsQuery("T"), std::move(row)); }
  std::string Fetch() {
    return MessageOf([&] {
      engine.meta().GotoTable("T");
      engine.FetchIfNeeded();
    });
  }

  testing::TFakeOLEDB backend;
  TDBConnSQLServer engine{"h", "d", "u", "p", false, backend.Maker()};
};

TEST_F(SQLServerEngineTest, ReadsATable) {
  Add(ColumnsQuery("T"), {"id", "No", kNull, "int", N(10), N(0), kNull, N(1)});
  Add(ColumnsQuery("T"), {"code", "NO", "('x')", "varchar", kNull, kNull, N(30), N(0)});
  Add(ColumnsQuery("T"), {"price", "YES", "((0))", "numeric", N(9), N(2), kNull, kNull});
  Add(ColumnsQuery("T"), {"ratio", "YES", kNull, "float", N(53), kNull, kNull, kNull});
  Add(ColumnsQuery("T"), {"note", "YES", kNull, "ntext", kNull, kNull, N(1073741823), kNull});
  AddKey({"PK", N(1), N(1), "id", N(0)});
  AddKey({"by_code", N(0), N(0), "code", N(1), "price", N(0), kNull, kNull, "ratio", N(1)});
  AddKey({"_WA_Sys", N(0), N(0)});
  TMemDataset::TRow full = {"all", N(1), N(0)};
  for (int i = 1; i <= 16; ++i) full.insert(full.end(), {"c" + std::to_string(i), N(0)});
  AddKey(full);
  const std::int64_t other_bits = 131072 + 16;
  AddConstraint({"PK", kNull, N(other_bits + 1)});
  AddConstraint({"U", "code", N(2)});
  AddConstraint(
      {"F", "id", N(other_bits + 3), kNull, "P", "id", "p_id", kNull, kNull, "code", "p_code", "price", kNull});
  AddConstraint({"C", kNull, N(4), "([price] > 0)"});
  AddConstraint({"D", "price", N(5), "((0))"});
  EXPECT_EQ(Fetch(), "nothing raised");
  EXPECT_EQ(DumpMeta(engine.meta()), R"(table T fetched
column id <I4>(0,0) notnull autoinc
column code <VARCHAR>(30,0) default=('x')
column price <DECIMAL>(9,2) default=((0))
column ratio <DOUBLE>(53,0)
column note <NTEXT_mssql>(0,0)
key PK(id A) primary unique
key by_code(code D,price A,ratio D)
key all(c1 A,c2 A,c3 A,c4 A,c5 A,c6 A,c7 A,c8 A,c9 A,c10 A,c11 A,c12 A,c13 A,c14 A,c15 A,c16 A) unique
constraint PK()->() type=0
constraint U(code)->() type=1
constraint F(id,code,price)->P(p_id,p_code,)
constraint C()->() type=3
constraint D(price)->() type=4 value=((0))
)");
  EXPECT_THAT(backend.log, ElementsAre(ColumnsQuery("T"), KeysQuery("T"), ConstraintsQuery("T")));
}

TEST_F(SQLServerEngineTest, RefusesWhatItCannotRead) {
  AddConstraint({"X", "a", N(6)});
  EXPECT_EQ(Fetch(), "Unknown constraint type");
  Add(ColumnsQuery("T"), {"x", "YES", kNull, "xml", kNull, kNull, kNull, N(0)});
  EXPECT_EQ(Fetch(), "TDBConn.DecodeColumn: Unhandled column type xml");
  backend.errors[KeysQuery("T")] = "Invalid object name 'sysindexes'.";
  backend.answers[ColumnsQuery("T")].rows.back()[3] = "int";
  EXPECT_EQ(Fetch(), "Invalid object name 'sysindexes'.");
  EXPECT_EQ(DumpMeta(engine.meta()), "table T\ncolumn x <I4>(0,0)\n");
}

TEST_F(SQLServerEngineTest, AQuoteInANameIsDoubled) {
  backend.tables = {{"it's", "TABLE"}};
  engine.Connect();
  backend.TakeLog();
  engine.meta().GotoTable("it's");
  engine.FetchIfNeeded();
  EXPECT_THAT(backend.log, ElementsAre(ColumnsQuery("it''s"), KeysQuery("it''s"), ConstraintsQuery("it''s")));
}

TEST_F(SQLServerEngineTest, ReadsChunksByAClusteredColumn) {
  const struct {
    TMemDataset::TRow key;
    bool chunks;
  } kCases[] = {
      {{"PK", N(1), N(1), "id", N(0), "b", N(0)}, false},
      {{"PK", N(1), N(0), "id", N(0)}, false},
      {{"cluster", N(0), N(1), "id", N(0)}, true},
  };
  for (const auto& c : kCases) {
    backend.answers[KeysQuery("T")].rows.clear();
    AddKey(c.key);
    engine.Connect();
    EXPECT_EQ(engine.SupportsChunks("T"), c.chunks);
    const std::string error = MessageOf([&] { engine.OpenTableDataChunk("T", 1, 5); });
    EXPECT_EQ(error, c.chunks ? "nothing raised" : "Table T can not be opened in chunks!");
  }
  EXPECT_EQ(backend.log.back(), "select top 5 * from [T] where id not in (select top 0 id from [T])");
  engine.OpenTableDataChunk("T", 101, 100);
  EXPECT_EQ(backend.log.back(), "select top 100 * from [T] where id not in (select top 100 id from [T])");
}

// The messages behind the first one, for an engine that takes any table for one with chunks.
TEST_F(SQLServerEngineTest, SaysWhatIsWrongWithAKey) {
  struct TBold final : TDBConnSQLServer {
    using TDBConnSQLServer::TDBConnSQLServer;
    bool SupportsChunks(const std::string&) override { return true; }
  };
  TBold bold("h", "d", "u", "p", false, backend.Maker());
  bold.Connect();
  EXPECT_EQ(MessageOf([&] { bold.OpenTableDataChunk("T", 1, 5); }),
            "TDBConnSQLServer.OpenTableDataChunk: Table T does not have a primary key!");
  AddKey({"PK", N(1), N(1), "a", N(0), "b", N(0)});
  bold.Connect();
  EXPECT_EQ(MessageOf([&] { bold.OpenTableDataChunk("T", 1, 5); }),
            "TDBConnSQLServer.OpenTableDataChunk: Table T has a multiple columns primary key!");
}

TEST_F(SQLServerEngineTest, DatesBeginIn1753) {
  const TDateTime first = EncodeDate(1753, 1, 1);
  const TDateTime before = EncodeDate(1752, 12, 31) + EncodeTime(23, 59, 59);
  const struct {
    EFieldKind kind;
    TVariant value;
    const char* text;
  } kCases[] = {
      {EFieldKind::Date, TMoment{first}, "'17530101'"},
      {EFieldKind::DateTime, TMoment{before}, "Date/time value out of range"},
      {EFieldKind::Time, TMoment{before}, "Date/time value out of range"},
      {EFieldKind::Date, TMoment{before}, "Date/time value out of range"},
      {EFieldKind::TimeStamp, TMoment{before}, "'17521231 23:59:59'"},
      {EFieldKind::Date, {}, "NULL"},
      {EFieldKind::String, "it's"s, "'it''s'"},
      {EFieldKind::Blob, "\x01\xab"s, "0x01AB"},
  };
  for (const auto& c : kCases) {
    const TFieldDef def{"f", c.kind};
    std::string text;
    const std::string error = MessageOf([&] { engine.FieldValParam({def, c.value}, text); });
    EXPECT_EQ(text.empty() ? error : text, c.text);
  }
}

TEST_F(SQLServerEngineTest, ChangesByProceduresOfTheServer) {
  Add(ColumnsQuery("T"), {"id", "No", kNull, "int", N(10), N(0), kNull, N(1)});
  Add(ColumnsQuery("T"), {"more", "No", kNull, "int", N(10), N(0), kNull, N(1)});
  engine.BeforeDataLoad("T");
  engine.AfterDataLoad("T");
  backend.log.erase(backend.log.begin(), backend.log.begin() + 3);  // the fetch
  EXPECT_THAT(backend.TakeLog(), ElementsAre("set identity_insert [T] on", "set identity_insert [T] off"));
  engine.ModifyColumn("T", "id", "no", "bigint");
  EXPECT_THAT(backend.TakeLog(),
              ElementsAre("exec sp_rename '[T].[id]','no','COLUMN'", "alter table [T] ALTER COLUMN [no] bigint"));
  engine.RenameTable("T", "N");
  EXPECT_THAT(backend.TakeLog(), ElementsAre("exec sp_rename '[T]','N'"));
  EXPECT_EQ(DumpMeta(engine.meta()), "table N\n");
  engine.BeforeDataLoad("N");
  EXPECT_EQ(backend.log.size(), 3u) << "nothing but the fetch";
}

TEST_F(SQLServerEngineTest, ServersListTheirDatabases) {
  backend.catalogs = {"master", "sales"};
  TDBConnSQLServer short_lived("h", "", "u", "p", false, backend.Maker());
  TStringList list;
  short_lived.ListDatabases(list);
  EXPECT_THAT(list, ElementsAre("master", "sales"));
}

}  // namespace
}  // namespace velmora
