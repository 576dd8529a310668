// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "core/ColumnTypes.h"
#include "core/DBConn.h"
#include "support/CaseFile.h"
#include "support/FakeConn.h"
#include "support/MessageOf.h"
#include "util/Format.h"

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

TEST(GenericTypesTest, EveryWordInBothDirections) {
  TDBConn conn;
  TColumnTypeInfoArray table;
  conn.GetColumnTypes(table);
  const auto rows = testing::CaseRows("core/generic_types.txt");
  ASSERT_EQ(table.size(), rows.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    const std::string &word = rows[i][0], &tag = rows[i][1];
    SCOPED_TRACE(word);
    const TMetaColumn column = Column(table[i].datatype, StrToInt(rows[i][2]), 2);
    EXPECT_EQ(table[i].name, word);
    EXPECT_EQ(NeutralTag(table[i].datatype), tag);
    EXPECT_EQ(Written(conn, column), rows[i][3]);
    EXPECT_EQ(Written(conn, column, false), word);
    EXPECT_EQ(Decoded(conn, word, 10, 11, 3), tag + " " + rows[i][4]);
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
  auto cases = testing::CaseRows("core/column_texts.txt");
  // With blanks that a file would not show.
  cases.insert(cases.end(), {
                                {"varchar(10)  default 'a b'  not   null ", "<VARCHAR> 10,0 not null"},
                                {"text  \t not null", "<TEXT> 0,0"},
                                {"decimal (10,2)", "TDBConn.DecodeColumn: Unhandled column type decimal "},
                                {" int", "TDBConn.DecodeColumn: Unhandled column type "},
                                {"", "TDBConn.DecodeColumn: Unhandled column type "},
                            });
  TDBConn conn;
  for (const TStringList& each : cases) {
    TMetaColumn column;
    const std::string message = MessageOf([&] { conn.ParseColumnDescription(each[0], column); });
    const std::string result = std::string(NeutralTag(column.datatype)) + " " + std::to_string(column.size) + "," +
                               std::to_string(column.precision) + (column.notnull ? " not null" : "");
    EXPECT_EQ(message == kNothing ? result : message, each.at(1)) << each[0];
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
