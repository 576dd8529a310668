#include "engines/mysql/MySQLTypes.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"
#include "support/ParserHost.h"
#include "util/Format.h"
#include "util/Lists.h"

namespace velmora::testing {
namespace {

// A row of the table as it is read and written: a column of `size` and `precision` is written as `bare` or `detailed`,
// both of which read back as the type.
struct TCase {
  const char* word;
  TNeutralType datatype;
  std::int64_t size;
  std::int32_t precision;
  const char* bare;
  const char* detailed;
  std::initializer_list<TNeutralType> accepts = {};
  const char* aliases = "";
};

const TCase kCases[] = {
    {"tinyint", ntI1, 4, 0, "tinyint", "tinyint", {ntBool}},
    {"smallint", ntI2, 6, 0, "smallint", "smallint"},
    {"int", ntI4, 11, 0, "int", "int"},
    {"bigint", ntI8, 20, 0, "bigint", "bigint", {ntTimestampMsSql}},
    {"tinyint unsigned", ntUI1, 3, 0, "tinyint unsigned", "tinyint unsigned", {ntBool}},
    {"smallint unsigned", ntUI2, 5, 0, "smallint unsigned", "smallint unsigned"},
    {"int unsigned", ntUI4, 10, 0, "int unsigned", "int unsigned"},
    {"bigint unsigned", ntUI8, 20, 0, "bigint unsigned", "bigint unsigned"},
    {"longblob", ntBytes, 1, 0, "longblob", "longblob", {ntImageMsSql}},
    {"tinyblob", ntBytes, 1, 0, "longblob", "longblob"},
    {"blob", ntBytes, 300, 0, "longblob", "longblob"},
    {"mediumblob", ntBytes, 70000, 0, "longblob", "longblob"},
    {"longtext", ntText, 1, 0, "longtext", "longtext"},
    {"tinytext", ntText, 1, 0, "longtext", "longtext"},
    {"text", ntText, 300, 0, "longtext", "longtext"},
    {"mediumtext", ntText, 70000, 0, "longtext", "longtext"},
    {"char", ntChar, 255, 0, "char", "char(255)"},
    {"varchar", ntVarChar, 1, 0, "varchar", "varchar(1)"},
    {"national char", ntNChar, 20, 0, "national char", "national char(20)"},
    {"national varchar", ntNVarChar, 20, 0, "national varchar", "national varchar(20)"},
    {"date", ntDate, 4, 0, "date", "date"},
    {"datetime", ntDateTime, 8, 0, "datetime", "datetime", {ntSmallDateTimeMsSql}},
    {"time", ntTime, 4, 0, "time", "time"},
    {"timestamp", ntTimestamp, 14, 0, "timestamp", "timestamp"},
    {"year", ntYearMySql, 4, 0, "year", "year"},
    {"decimal", ntDecimal, 10, 2, "decimal", "decimal(10,2)", {}, "numeric;dec"},
    {"float", ntFloat, 24, 0, "float", "float(24)"},
    {"double", ntDouble, 53, 0, "double", "double(53)"},
};

TNeutralType Decoded(TDBConn& conn, const std::string& word) {
  TNeutralType datatype = ntUnknown;
  TNumber length, precision, scale;
  conn.DecodeColumn(word, 0, 0, 0, datatype, length, precision, scale);
  return datatype;
}

std::string Described(TDBConn& conn, TNeutralType datatype, std::int64_t size, std::int32_t precision, bool detailed) {
  TMetaColumn column;
  column.table = "t";
  column.name = "c";
  column.datatype = datatype;
  column.size = size;
  column.precision = precision;
  std::string text;
  conn.ColumnDescription(column, detailed, text);
  return text;
}

TEST(MySQLTypes, RowsStandInTheirOrderAndAcceptTheirKin) {
  const TColumnTypeInfoArray table = MySQLColumnTypes();
  ASSERT_EQ(std::size(kCases), table.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    EXPECT_EQ(kCases[i].word, table[i].name);
    EXPECT_EQ(kCases[i].aliases, table[i].aliases) << table[i].name;
    const TNeutralSet accepts(kCases[i].accepts);
    for (int type = 0; type <= ntUnknown; ++type) {
      const auto each = static_cast<TNeutralType>(type);
      EXPECT_EQ(accepts.Holds(each), table[i].accepts.Holds(each)) << table[i].name << " " << NeutralTag(each);
    }
  }
}

TEST(MySQLTypes, EachWordIsReadAndItsTypeWritten) {
  TParserHost host;
  for (const TCase& each : kCases) {
    SCOPED_TRACE(each.word);
    EXPECT_EQ(each.datatype, Decoded(host, each.word));
    EXPECT_EQ(each.bare, Described(host, each.datatype, each.size, each.precision, false));
    EXPECT_EQ(each.detailed, Described(host, each.datatype, each.size, each.precision, true));
    TStringList aliases;
    SplitText(";", each.aliases, aliases);
    for (const std::string& alias : aliases) EXPECT_EQ(each.datatype, Decoded(host, alias));
  }
  EXPECT_EQ("tinyint", Described(host, ntBool, 1, 0, true));
  EXPECT_EQ("bigint", Described(host, ntTimestampMsSql, 0, 0, true));
  EXPECT_EQ("longblob", Described(host, ntImageMsSql, 0, 0, true));
  EXPECT_EQ("datetime", Described(host, ntSmallDateTimeMsSql, 0, 0, true));
}

TEST(MySQLTypes, SizesAtTheEdges) {
  TParserHost host;
  EXPECT_EQ("decimal", Described(host, ntDecimal, 0, 0, true));
  EXPECT_EQ("float", Described(host, ntFloat, 0, 0, true));
  EXPECT_EQ("double(1)", Described(host, ntDouble, 1, 0, true));
  for (const auto& [datatype, size] : {std::pair{ntFloat, 25}, {ntDouble, 54}, {ntChar, 0}, {ntVarChar, 256}}) {
    EXPECT_EQ(Format("TDBConn.ColumnDescription: Unhandled column type %d for column t/c", static_cast<int>(datatype)),
              MessageOf([&, &datatype = datatype, &size = size] { Described(host, datatype, size, 0, true); }));
  }
}

TEST(MySQLTypes, WordsOutsideTheTableAreRefused) {
  TParserHost host;
  for (const char* word : {"mediumint", "enum", "set", "integer", "bool", "binary", "varbinary", "INT", "bit", ""}) {
    EXPECT_EQ(std::string("TDBConn.DecodeColumn: Unhandled column type ") + word,
              MessageOf([&] { Decoded(host, word); }));
  }
}

}  // namespace
}  // namespace velmora::testing
