#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/Meta.h"
#include "engines/oledb/AccessTypes.h"
#include "engines/oledb/DBConnAccess.h"
#include "engines/oledb/OLEDBTypes.h"
#include "engines/oledb/SQLServerTypes.h"
#include "support/FakeOLEDB.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::Column;
using ::testing::ElementsAre;
using testing::IndexColumn;
using testing::MessageOf;

class AccessEngineTest : public ::testing::Test {
 protected:
  void AddKeyed(const std::string& table, const TStringList& key) {
    std::vector<TOLEDBColumnRow> columns;
    std::vector<TOLEDBIndexRow> indexes;
    for (const std::string& name : key) {
      columns.push_back(Column(name, kDbTypeI4));
      indexes.push_back(IndexColumn("PrimaryKey", name, static_cast<std::uint32_t>(columns.size()), true, true));
    }
    backend.AddTable(table, columns, indexes);
  }

  testing::TScratchFolder folder;
  std::string path = folder / "shop.mdb";
  testing::TFakeOLEDB backend;
  TDBConnAccess engine{path, "", "", backend.Maker()};
};

TEST_F(AccessEngineTest, MakesAMissingFile) {
  engine.Connect();
  EXPECT_THAT(backend.TakeLog(), ElementsAre("create " + path + " 5", "open " + path, "tables"));
  WriteFileText(path, "");
  engine.Connect();
  EXPECT_THAT(backend.TakeLog(), ElementsAre("tables")) << "an open one stays open";
  engine.Disconnect();
  engine.Connect();
  EXPECT_THAT(backend.TakeLog(), ElementsAre("close", "open " + path, "tables"));
  EXPECT_EQ(engine.GetConnectionObject().InitializationString(),
            "Provider=Microsoft.Jet.OLEDB.4.0;User ID=Admin;Password=;Data Source=" + path + ";");

  TDBConnAccess other("/nowhere/a.mdb", "", "", backend.Maker());
  backend.errors["create /nowhere/a.mdb 5"] = "Cannot write";
  EXPECT_EQ(MessageOf([&] { other.Connect(); }), "Cannot write");
  EXPECT_THAT(backend.log, ElementsAre("create /nowhere/a.mdb 5")) << "nothing is opened then";
}

TEST_F(AccessEngineTest, ReadsChunksByItsKey) {
  AddKeyed("one", {"id"});
  AddKeyed("two", {"a", "b"});
  AddKeyed("none", {});
  engine.Connect();
  EXPECT_TRUE(engine.SupportsChunks("one"));
  engine.OpenTableDataChunk("one", 1, 5);
  EXPECT_EQ(backend.log.back(), "select top 5 * from [one]");
  engine.OpenTableDataChunk("one", 6, 5);
  EXPECT_EQ(backend.log.back(), "select top 5 * from [one] where id not in (select top 5 id from [one])");
  for (const char* table : {"two", "none"}) {
    EXPECT_FALSE(engine.SupportsChunks(table));
    EXPECT_EQ(MessageOf([&] { engine.OpenTableDataChunk(table, 1, 5); }),
              "Table " + std::string(table) + " can not be opened in chunks!");
  }
}

// The messages behind that one, for an engine that takes any table for one with chunks.
TEST_F(AccessEngineTest, SaysWhatIsWrongWithAKey) {
  struct TBold final : TDBConnAccess {
    using TDBConnAccess::TDBConnAccess;
    bool SupportsChunks(const std::string&) override { return true; }
  };
  AddKeyed("two", {"a", "b"});
  AddKeyed("none", {});
  TBold bold(path, "", "", backend.Maker());
  bold.Connect();
  EXPECT_EQ(MessageOf([&] { bold.OpenTableDataChunk("none", 1, 5); }),
            "TDBConnAccess.OpenTableDataChunk: Table none does not have a primary key!");
  EXPECT_EQ(MessageOf([&] { bold.OpenTableDataChunk("two", 1, 5); }),
            "TDBConnAccess.OpenTableDataChunk: Table two has a multiple columns primary key!");
}

TEST_F(AccessEngineTest, WritesDefaultsInItsOwnWay) {
  const struct {
    const char *value, *text;
  } kCases[] = {
      {"(getdate())", " default now()"},
      {"(((GetDate())))", " default now()"},
      {"getdate()", " default now()"},
      {"((0))", " default 0"},
      {"(1)+(2)", " default 1)+(2"},
      {"()", ""},
      {"(", " default ("},
      {"'x'", " default 'x'"},
      {"", ""},
  };
  for (const auto& c : kCases) {
    TMetaColumn column;
    column.datatype = ntI4;
    column.notnull = column.autoinc = true;
    column.default_ = c.value;
    std::string text;
    engine.no_defaults = false;
    engine.ColumnDescription(column, true, text);
    EXPECT_EQ(text, std::string("int not null identity") + c.text);
    engine.no_defaults = true;
    engine.ColumnDescription(column, true, text);
    EXPECT_EQ(text, "int not null identity");
    engine.ColumnDescription(column, false, text);
    EXPECT_EQ(text, "int");
  }
}

TEST_F(AccessEngineTest, LongTextsAreMemos) {
  const struct {
    TNeutralType type;
    std::int64_t size;
    const char* text;
    std::int64_t converted;
  } kCases[] = {
      {ntVarChar, 255, "varchar", 255},
      {ntVarChar, 256, "text", 4294967295},
      {ntNVarChar, 4000, "text", 4294967295},
      {ntNVarChar, 255, "nvarchar", 255},
      {ntNTextMsSql, 0, "text", 4294967295},
      {ntText, 70000, "text", 70000},
      {ntI8, 0, "float", 0},
      {ntSmallDateTimeMsSql, 0, "datetime", 0},
  };
  for (const auto& c : kCases) {
    TMetaColumn column;
    column.datatype = c.type;
    column.size = c.size;
    engine.ConvertColumn(column, column);
    EXPECT_EQ(column.description, c.text);
    EXPECT_EQ(column.size, c.converted) << c.text;
  }
}

TEST_F(AccessEngineTest, DatesStandBetweenNumberSigns) {
  std::string text;
  engine.DateTimeLiteral(EncodeDate(2001, 2, 3) + EncodeTime(4, 5, 6), text);
  EXPECT_EQ(text, "#2001-02-03 04:05:06#");
}

// A row of its type table is needed for each column that is read.
TEST_F(AccessEngineTest, UnsignedLongNumbersAreRefused) {
  backend.AddTable("T", {Column("a", kDbTypeI8), Column("b", kDbTypeUI8)});
  engine.Connect();
  engine.meta().GotoTable("T");
  EXPECT_EQ(MessageOf([&] { engine.FetchIfNeeded(); }), "TDBConn.ColumnTypeInfo: Unhandled type");
  EXPECT_EQ(engine.meta().tColumns.Rows().size(), 1u);
}

// --- The type tables of the family, a row a line: word, neutral type, what else it writes, flags and ranges.

std::string Told(TColumnTypeInfoArray table) {
  std::string text;
  for (const TColumnTypeInfo& row : table) {
    text += std::string(row.name) + " " + std::string(NeutralTag(row.datatype));
    for (int type = ntI1; type <= ntUnknown; ++type)
      if (row.accepts.Holds(static_cast<TNeutralType>(type)))
        text += "+" + std::string(NeutralTag(static_cast<TNeutralType>(type)));
    if (!row.aliases.empty()) text += " or " + std::string(row.aliases);
    text += std::string(row.has_length ? " L" : "") + (row.has_precision ? " P" : "") + (row.has_scale ? " S" : "") +
            (row.is_character ? " C" : "") + (row.size_required ? " R" : "");
    if (row.min_length != kNoBound || row.max_length != kNoBound)
      text += " " + std::to_string(row.min_length) + ".." + std::to_string(row.max_length);
    if (row.min_precision != kNoBound || row.max_precision != kNoBound)
      text += " p" + std::to_string(row.min_precision) + ".." + std::to_string(row.max_precision);
    text += "\n";
  }
  return text;
}

constexpr char kBinary[] =
    "binary <BYTES> L 1..8000\nvarbinary <VARBYTES> L 1..8000\nimage <IMAGE_mssql>+<BYTES>+<VARBYTES> 8001..-1\n"
    "text <TEXT> 8001..-1\nntext <NTEXT_mssql>\n";
constexpr char kIntegers[] = "tinyint <I1>+<UI1>\nsmallint <I2>+<UI2>\nint <I4>+<UI4>\n";
constexpr char kCharacters[] =
    "char <CHAR> L C\nvarchar <VARCHAR> L C\nnchar <NCHAR> L C 1..4000\nnvarchar <NVARCHAR> L C 1..4000\n";
constexpr char kOthers[] = "bit <BOOL>\ntimestamp <TIMESTAMP_mssql>\nuniqueidentifier <UID_mssql>\n";
constexpr char kMoney[] = "money <MONEY_mssql>\nsmallmoney <SMALLMONEY_mssql>\ndecimal <DECIMAL> or numeric P S\n";
constexpr char kFloats[] = "float <DOUBLE> P p1..53\nreal <FLOAT> or float(24)\n";

TEST(OLEDBTypesTest, TheTablesOfTheFamily) {
  EXPECT_EQ(Told(OLEDBColumnTypes()), std::string(kIntegers) + "bigint <I8>+<UI8>\n" + kBinary + kCharacters + kOthers +
                                          "date <DATE> 8..8\ntime <TIME> 8..8\ndatetime <DATETIME>+<TIMESTAMP> 8..8\n"
                                          "smalldatetime <SMALLDATETIME_mssql> 4..4\n" +
                                          kMoney + kFloats);
  EXPECT_EQ(Told(SQLServerColumnTypes()),
            std::string(kIntegers) + "bigint <I8>+<UI8>\n" + kBinary + kCharacters + kOthers +
                "datetime <DATETIME>+<DATE>+<TIME>+<TIMESTAMP> 8..8\nsmalldatetime <SMALLDATETIME_mssql> 4..4\n" +
                kMoney + kFloats);
  EXPECT_EQ(Told(AccessColumnTypes()),
            std::string(kIntegers) + kBinary +
                "char <CHAR> L C 1..255\nvarchar <VARCHAR> L C 1..255\nnchar <NCHAR> L C 1..255\n"
                "nvarchar <NVARCHAR> L C 1..255\n" +
                kOthers +
                "datetime <DATETIME>+<TIMESTAMP>+<SMALLDATETIME_mssql> 8..8\ndate <DATE> 4..4\ntime <TIME> 4..4\n" +
                kMoney + "float <DOUBLE>+<I8>\nreal <FLOAT> or float(24)\n");
}

}  // namespace
}  // namespace velmora
