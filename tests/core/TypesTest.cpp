#include <gtest/gtest.h>

#include "core/ColumnTypes.h"
#include "core/DBConn.h"
#include "support/FakeConn.h"
#include "support/MessageOf.h"

namespace velmora {
namespace {

using testing::MessageOf;
using testing::TFakeConn;

constexpr char kNothing[] = "nothing raised";

TMetaColumn Column(TNeutralType datatype, std::int64_t size = 0, std::int32_t precision = 0) {
  TMetaColumn column;
  column.table = "t";
  column.name = "c";
  column.datatype = datatype;
  column.size = size;
  column.precision = precision;
  return column;
}

// The detailed text of a column, or the message of the error.
std::string Written(TDBConn& conn, const TMetaColumn& column, bool detailed = true) {
  std::string text = "untouched";
  const std::string message = MessageOf([&] { conn.ColumnDescription(column, detailed, text); });
  return message == kNothing ? text : message;
}

std::string Show(TNumber number) { return number ? std::to_string(*number) : "-"; }

// "<DECIMAL> length,precision,scale", a null as "-"; or the message of the error.
std::string Decoded(TDBConn& conn, const std::string& word, TNumber length = {}, TNumber precision = {},
                    TNumber scale = {}) {
  TNeutralType type = ntUnknown;
  TNumber out_length = 77, out_precision = 77, out_scale = 77;
  const std::string message =
      MessageOf([&] { conn.DecodeColumn(word, length, precision, scale, type, out_length, out_precision, out_scale); });
  if (message != kNothing) return message;
  return std::string(NeutralTag(type)) + " " + Show(out_length) + "," + Show(out_precision) + "," + Show(out_scale);
}

TEST(NeutralTypesTest, TagsStandAtTheirValues) {
  EXPECT_EQ(NeutralTag(ntI1), "<I1>");
  EXPECT_EQ(NeutralTag(ntUI8), "<UI8>");
  EXPECT_EQ(NeutralTag(static_cast<TNeutralType>(12)), "<DATETIME>");
  EXPECT_EQ(NeutralTag(static_cast<TNeutralType>(16)), "<VARCHAR>");
  EXPECT_EQ(NeutralTag(static_cast<TNeutralType>(22)), "<TEXT>");
  EXPECT_EQ(NeutralTag(static_cast<TNeutralType>(30)), "<TIMESTAMP_mssql>");
  EXPECT_EQ(NeutralTag(static_cast<TNeutralType>(32)), "<Unknown>");
  EXPECT_EQ(NeutralTag(static_cast<TNeutralType>(33)), "");
}

TEST(NeutralTypesTest, Sets) {
  EXPECT_TRUE(kNumericUnquoted.Holds(ntFloat));
  EXPECT_FALSE(kNumericUnquoted.Holds(ntDouble)) << "its default is quoted";
  EXPECT_FALSE(kIntegers.Holds(static_cast<TNeutralType>(64))) << "64 is no value of a set, nor does it wrap to 0";
}

struct TGenericCase {
  const char* word;
  const char* tag;      // what the word means
  std::int64_t size;    // of a column of that type,
  const char* written;  // which reads so
  const char* decoded;  // the numbers 10, 11, 3 behind the word
};

// Every row, from its word to its type and back.
constexpr TGenericCase kGenericCases[] = {
    {"tinyint", "<I1>", 9, "tinyint", "-,-,-"},
    {"smallint", "<I2>", 9, "smallint", "-,-,-"},
    {"int", "<I4>", 9, "int", "-,-,-"},
    {"bigint", "<I8>", 9, "bigint", "-,-,-"},
    {"tinyint unsigned", "<UI1>", 9, "tinyint unsigned", "-,-,-"},
    {"smallint unsigned", "<UI2>", 9, "smallint unsigned", "-,-,-"},
    {"int unsigned", "<UI4>", 9, "int unsigned", "-,-,-"},
    {"bigint unsigned", "<UI8>", 9, "bigint unsigned", "-,-,-"},
    {"binary", "<BYTES>", 8001, "binary(8001)", "10,-,-"},
    {"varbinary", "<VARBYTES>", 8001, "varbinary(8001)", "10,-,-"},
    {"image", "<IMAGE_mssql>", 5, "image", "-,-,-"},
    {"text", "<TEXT>", 5, "text", "-,-,-"},
    {"ntext", "<NTEXT_mssql>", 5, "ntext", "-,-,-"},
    {"char", "<CHAR>", 0, "char(0)", "10,-,-"},
    {"varchar", "<VARCHAR>", 70000, "varchar(70000)", "10,-,-"},
    {"nchar", "<NCHAR>", 4000, "nchar(4000)", "10,-,-"},
    {"nvarchar", "<NVARCHAR>", 1, "nvarchar(1)", "10,-,-"},
    {"bit", "<BOOL>", 1, "bit", "-,-,-"},
    {"timestamp", "<TIMESTAMP>", 0, "timestamp", "-,-,-"},
    {"uniqueidentifier", "<UID_mssql>", 16, "uniqueidentifier", "-,-,-"},
    {"date", "<DATE>", 9, "date", "-,-,-"},
    {"time", "<TIME>", 9, "time", "-,-,-"},
    {"datetime", "<DATETIME>", 9, "datetime", "-,-,-"},
    {"money", "<MONEY_mssql>", 19, "money", "-,-,-"},
    {"smallmoney", "<SMALLMONEY_mssql>", 10, "smallmoney", "-,-,-"},
    {"decimal", "<DECIMAL>", 10, "decimal(10,2)", "-,11,3"},
    {"float", "<DOUBLE>", 53, "float(53)", "-,11,0"},
    {"real", "<FLOAT>", 24, "real", "-,-,-"},
};

TEST(GenericTypesTest, EveryWordInBothDirections) {
  TDBConn conn;
  TColumnTypeInfoArray table;
  conn.GetColumnTypes(table);
  ASSERT_EQ(table.size(), std::size(kGenericCases));
  for (std::size_t i = 0; i < table.size(); ++i) {
    const TGenericCase& each = kGenericCases[i];
    SCOPED_TRACE(each.word);
    EXPECT_EQ(table[i].name, each.word);
    EXPECT_EQ(NeutralTag(table[i].datatype), each.tag);
    EXPECT_EQ(Written(conn, Column(table[i].datatype, each.size, 2)), each.written);
    EXPECT_EQ(Written(conn, Column(table[i].datatype, each.size, 2), false), each.word);
    const bool scaled = std::string(each.word) == "decimal";
    EXPECT_EQ(Decoded(conn, each.word, 10, 11, 3), std::string(scaled ? "<DECIMAL>" : each.tag) + " " + each.decoded);
    EXPECT_FALSE(table[i].size_required);
  }
}

TEST(GenericTypesTest, TypesThatHaveNoWordOfTheirOwn) {
  TDBConn conn;
  EXPECT_EQ(Written(conn, Column(ntTimestampMsSql)), "bigint");
  for (TNeutralType type : {ntYearMySql, ntSmallDateTimeMsSql, ntArrayIb, ntUnknown}) {
    const std::string number = std::to_string(type);
    EXPECT_EQ(Written(conn, Column(type)),
              "TDBConn.ColumnDescription: Unhandled column type " + number + " for column t/c");
  }
}

TEST(GenericTypesTest, NamesAreSorted) {
  TDBConn conn;
  TStringList names = {"left over"};
  conn.GetColumnTypeNames(names);
  ASSERT_EQ(names.size(), 28U);
  EXPECT_EQ(names.front(), "bigint");
  EXPECT_EQ(names[1], "bigint unsigned");
  EXPECT_EQ(names.back(), "varchar");
}

TEST(ColumnTypeInfoTest, TheFirstRowThatWritesTheType) {
  TDBConn conn;
  TColumnTypeInfo row;
  conn.ColumnTypeInfo(ntTimestampMsSql, row);
  EXPECT_EQ(row.name, "bigint");
  conn.ColumnTypeInfo(ntBytes, row);
  EXPECT_EQ(row.name, "binary") << "before image, which accepts it";
  EXPECT_EQ(MessageOf([&] { conn.ColumnTypeInfo(ntYearMySql, row); }), "TDBConn.ColumnTypeInfo: Unhandled type");
}

// Rows that no engine of the base has, one per rule.
constexpr TColumnTypeInfo kRules[] = {
    {.name = "short", .datatype = ntChar, .has_length = true, .min_length = 1, .max_length = 10},
    {.name = "long", .datatype = ntChar, .has_length = true, .min_length = 11, .max_length = 20},
    {.name = "open", .datatype = ntBytes, .has_length = true, .max_length = 10},
    {.name = "Num", .datatype = ntDecimal, .aliases = "numeric;Dec", .has_precision = true, .has_scale = true},
    {.name = "single", .datatype = ntFloat, .has_precision = true, .min_precision = 1, .max_precision = 24},
    {.name = "upto", .datatype = ntDouble, .has_precision = true, .max_precision = 53},
    {.name = "must", .datatype = ntMoneyMsSql, .has_precision = true, .size_required = true, .min_precision = 1},
    {.name = "plain", .datatype = ntText},
    {.name = "other", .datatype = ntText, .accepts = {ntImageMsSql}},
};

class RulesTest : public ::testing::Test {
 protected:
  RulesTest() { conn.types = kRules; }
  TFakeConn conn;
};

TEST_F(RulesTest, ColumnDescription) {
  const auto refused = [](int type) {
    return "TDBConn.ColumnDescription: Unhandled column type " + std::to_string(type) + " for column t/c";
  };
  const struct {
    TMetaColumn column;
    std::string text;
  } cases[] = {
      {Column(ntChar, 1), "short(1)"},
      {Column(ntChar, 10), "short(10)"},
      {Column(ntChar, 11), "long(11)"},
      {Column(ntChar, 20), "long(20)"},
      {Column(ntChar, 0), refused(ntChar)},
      {Column(ntChar, 21), refused(ntChar)},
      {Column(ntBytes, 9000), "open(9000)"},  // no lower bound, hence no upper one
      {Column(ntBytes, 4294967295), "open(4294967295)"},
      {Column(ntDecimal, 10, 2), "Num(10,2)"},
      {Column(ntDecimal, 10, 0), "Num(10,0)"},
      {Column(ntDecimal, 0, 0), "Num"},
      {Column(ntDecimal, 0, 2), "Num(0,2)"},
      {Column(ntFloat, 24), "single(24)"},
      {Column(ntFloat, 0), "single"},  // outside the range, yet nothing was stated
      {Column(ntFloat, 25), refused(ntFloat)},
      {Column(ntDouble, 0), "upto"},  // within the range, "(0)" is cut
      {Column(ntDouble, 53), "upto(53)"},
      {Column(ntDouble, 54), refused(ntDouble)},
      {Column(ntMoneyMsSql, 7), "must(7)"},
      {Column(ntMoneyMsSql, 0), refused(ntMoneyMsSql)},  // this word has to have its size
      {Column(ntText, 123), "plain"},
      {Column(ntImageMsSql), "other"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(Written(conn, each.column), each.text) << NeutralTag(each.column.datatype) << each.column.size;
}

TEST_F(RulesTest, AnEngineWithoutTypesGivesTags) {
  conn.types = {};
  EXPECT_EQ(Written(conn, Column(ntDecimal, 10, 2)), "<DECIMAL>");
  EXPECT_EQ(Written(conn, Column(ntUnknown)), "<Unknown>");
  EXPECT_EQ(Written(conn, Column(static_cast<TNeutralType>(33))), "TDBConn.ColumnDescription: unhandled datatype");
}

TEST_F(RulesTest, ATextIsLeftAloneOnErrors) {
  std::string text = "before";
  EXPECT_THROW(conn.ColumnDescription(Column(ntChar, 0), true, text), EVelmora);
  EXPECT_EQ(text, "before");
}

TEST_F(RulesTest, DecodeColumn) {
  const struct {
    const char* word;
    TNumber length, precision, scale;
    const char* result;
  } cases[] = {
      {"short", 10, {}, {}, "<CHAR> 10,-,-"},
      {"short", 11, 5, 5, "<CHAR> -,-,-"},  // out of range: the word stands, its numbers do not
      {"short", {}, {}, {}, "<CHAR> -,-,-"},
      {"open", 9000, {}, {}, "<BYTES> 9000,-,-"},
      {"open", {}, {}, {}, "<BYTES> -,-,-"},
      {"Num", 9, 10, -2, "<DECIMAL> -,10,2"},
      {"NUMERIC", {}, 10, 0, "<DECIMAL> -,10,0"},
      {"dec", {}, {}, {}, "<DECIMAL> -,-,-"},
      {"single", {}, 10, 2, "<FLOAT> -,10,0"},  // a word without a scale drops it, and stays what it is
      {"single", {}, {}, 2, "<FLOAT> -,-,-"},   // an unstated precision lies below the range
      {"single", {}, 0, {}, "<FLOAT> -,-,-"},
      {"upto", {}, {}, {}, "<DOUBLE> -,-,0"},                                  // and passes where there is no lower end
      {"num", {}, {}, {}, "TDBConn.DecodeColumn: Unhandled column type num"},  // names are exact, aliases are not
      {"numeric;Dec", {}, {}, {}, "TDBConn.DecodeColumn: Unhandled column type numeric;Dec"},
      {"", {}, {}, {}, "TDBConn.DecodeColumn: Unhandled column type "},
  };
  for (const auto& each : cases)
    EXPECT_EQ(Decoded(conn, each.word, each.length, each.precision, each.scale), each.result) << each.word;
}

TEST_F(RulesTest, AScaleMakesADecimal) {
  static constexpr TColumnTypeInfo kScaled[] = {
      {.name = "number", .datatype = ntI8, .has_precision = true, .has_scale = true}};
  conn.types = kScaled;
  EXPECT_EQ(Decoded(conn, "number", {}, 8, 0), "<I8> -,8,0");
  EXPECT_EQ(Decoded(conn, "number", {}, 8, 2), "<DECIMAL> -,8,2");
}

TEST(ParseColumnDescriptionTest, TypeTexts) {
  const struct {
    const char* text;
    const char* result;  // tag, size, precision, notnull
  } cases[] = {
      {"int", "<I4> 0,0"},
      {"int(11)", "<I4> 0,0"},
      {"varchar( 10 )", "<VARCHAR> 10,0"},
      {"varchar(10) not null", "<VARCHAR> 10,0 not null"},
      {"varchar(10) NOT NULL default 'x'", "<VARCHAR> 10,0 not null"},
      {"varchar(10)  default 'a b'  not   null ", "<VARCHAR> 10,0 not null"},
      {"varchar(10) default 'is not null'", "<VARCHAR> 10,0"},
      {"varchar(10) default \"it's not null\" null", "<VARCHAR> 10,0"},
      {"varchar(10) not", "<VARCHAR> 10,0"},
      {"varchar(10) not x null", "<VARCHAR> 10,0"},
      {"text not null", "<TEXT> 0,0"},  // here "not" comes first, which does not count
      {"text default '' not null", "<TEXT> 0,0 not null"},
      {"text  \t not null", "<TEXT> 0,0"},
      {"numeric(10,2)", "<DECIMAL> 10,2"},
      {"decimal(10, -2 )", "<DECIMAL> 10,2"},
      {"decimal(10,)", "<DECIMAL> 10,0"},
      {"decimal(0,0) not null", "<DECIMAL> 0,0 not null"},
      {"float(12)", "<DOUBLE> 12,0"},
      {"float(60)", "<DOUBLE> 0,0"},
      {"decimal(x)", "'x' is not a valid integer value"},
      {"decimal()", "'' is not a valid integer value"},
      {"decimal(1,2,3)", "'2,3' is not a valid integer value"},
      {"decimal (10,2)", "TDBConn.DecodeColumn: Unhandled column type decimal "},  // the blank belongs to the name
      {"decimal(10", "TDBConn.DecodeColumn: Unhandled column type decimal(10"},
      {" int", "TDBConn.DecodeColumn: Unhandled column type "},
      {"int unsigned", "<I4> 0,0"},  // one word is all that is read
      {"", "TDBConn.DecodeColumn: Unhandled column type "},
  };
  TDBConn conn;
  for (const auto& each : cases) {
    TMetaColumn column;
    const std::string message = MessageOf([&] { conn.ParseColumnDescription(each.text, column); });
    const std::string result = std::string(NeutralTag(column.datatype)) + " " + std::to_string(column.size) + "," +
                               std::to_string(column.precision) + (column.notnull ? " not null" : "");
    EXPECT_EQ(message == kNothing ? result : message, each.result) << each.text;
  }
}

TEST(ParseColumnDescriptionTest, NumbersOfTheRecordCountWithoutBrackets) {
  TDBConn conn;
  TMetaColumn column = Column(ntI1, 12, 3);
  column.notnull = true;
  conn.ParseColumnDescription("decimal", column);
  EXPECT_EQ(Written(conn, column), "decimal(12,3)");
  EXPECT_FALSE(column.notnull);
  EXPECT_EQ(column.name, "c") << "nothing else is touched";
  conn.ParseColumnDescription("decimal(5)", column);
  EXPECT_EQ(Written(conn, column), "decimal(5,3)") << "a second number that is missing leaves the record's";
}

// Writes "description datatype" of the converted column, or the message.
std::string Converted(TDBConn& conn, const TMetaColumn& source) {
  TMetaColumn column;
  const std::string message = MessageOf([&] { conn.ConvertColumn(source, column); });
  return message == kNothing ? column.description + " " + std::string(NeutralTag(column.datatype)) : message;
}

TEST(ConvertColumnTest, GenericTable) {
  TDBConn conn;
  const struct {
    TMetaColumn source;
    const char* result;
  } cases[] = {
      {Column(ntI4, 11), "int <I4>"},
      {Column(ntTimestampMsSql), "bigint <I8>"},
      // The last row that passes wins: bytes pass "binary" and then "image".
      {Column(ntBytes, 100), "image <IMAGE_mssql>"},
      {Column(ntVarBytes, 9000), "image <IMAGE_mssql>"},
      {Column(ntNChar, 4000), "nchar <NCHAR>"},
      {Column(ntDecimal, 10, 2), "decimal <DECIMAL>"},
      {Column(ntDouble, 0), "float <DOUBLE>"},
      {Column(ntDouble, -1), "TDBConn.ColumnDescription: Unhandled column type 9 for column t/c"},
      {Column(ntNChar, 4001), "TDBConn.ColumnDescription: Unhandled column type 17 for column t/c"},
      {Column(ntYearMySql), "TDBConn.ColumnDescription: Unhandled column type 23 for column t/c"},
  };
  for (const auto& each : cases) EXPECT_EQ(Converted(conn, each.source), each.result) << each.source.size;
}

TEST(ConvertColumnTest, ARowThatFailsItsSizesStillSetsTheType) {
  static constexpr TColumnTypeInfo kRows[] = {
      {.name = "wide", .datatype = ntText, .accepts = {ntVarChar}},
      {.name = "narrow", .datatype = ntVarChar, .has_length = true, .min_length = 1, .max_length = 10},
  };
  TFakeConn conn;
  conn.types = kRows;
  EXPECT_EQ(Converted(conn, Column(ntVarChar, 50)), "wide <VARCHAR>") << "the word by wide, the type by narrow";
}

TEST(ConvertColumnTest, WithoutATableNothingConverts) {
  TFakeConn conn;
  conn.types = {};
  EXPECT_EQ(Converted(conn, Column(ntI4)), "TDBConn.ConvertColumn: Unhandled column type for column t/c");
}

TEST(ConvertColumnTest, TheRestIsCopiedAndOneRecordMayServeAsBoth) {
  TDBConn conn;
  TMetaColumn column = Column(ntTimestampMsSql, 8);
  column.description = "rowversion";
  column.notnull = true;
  column.default_ = "'1'";
  conn.ConvertColumn(column, column);
  EXPECT_EQ(column.description, "bigint");
  EXPECT_EQ(column.default_, "'1'");
  EXPECT_TRUE(column.notnull);
  EXPECT_EQ(column.size, 8);
}

}  // namespace
}  // namespace velmora
