// Fields of every type: what they are to both products, and their values up to the limits.

#include "formats/dbf/DbfRig.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::DbfDoubleBytes;
using testing::DbfLeft;
using testing::DbfLittle;
using testing::DbfMomentBytes;
using testing::DbfRight;
using testing::TDbfDraft;
using testing::TDbfDraftField;

class DbfValuesTest : public testing::TDbfRig {
 protected:
  // One record per value of the one field.
  TDbfDraft Single(TDbfDraftField field, const std::vector<std::string>& values, int version, int code_page = 0) {
    TDbfDraft table{.fields = {std::move(field)}, .version = version, .code_page = code_page};
    for (const std::string& value : values) table.records.push_back(" " + value);
    return table;
  }
};

TEST_F(DbfValuesTest, ColumnsOfBothProducts) {
  TDbfDraft table{.fields = {{"TEXT", 'C', 254},
                             {"N", 'N', 10},
                             {"NUM", 'N', 20, 5},
                             {"F", 'F', 12, 2},
                             {"L", 'L', 1},
                             {"D", 'D', 8},
                             {"M", 'M', 10},
                             {"G", 'G', 10}}};
  Put("t.dbf", table);
  EXPECT_EQ(Columns(*DBase()),
            "TEXT 130 0 254 0,0 null string\nN 5 16 0 15,0 null float\nNUM 5 16 0 15,0 null float\n"
            "F 5 16 0 15,0 null float\nL 11 16 0 0,0 null boolean\nD 7 16 0 0,0 null date\n"
            "M 130 128 0 0,0 null memo\nG 128 128 0 0,0 null blob\n");
  table.version = 0xF5;
  Put("t.dbf", table);
  EXPECT_EQ(Columns(*FoxPro()),
            "TEXT 129 16 254 0,0 fixed char\nN 131 16 0 10,0 BCD\nNUM 131 16 0 20,5 BCD\nF 131 16 0 12,2 BCD\n"
            "L 11 16 0 0,0 boolean\nD 133 16 0 0,0 date\nM 129 128 0 0,0 memo\nG 128 128 0 0,0 blob\n");
  Put("t.dbf", TDbfDraft{.fields = {{"I", 'I', 4, 0, 2},
                                    {"ID", 'I', 4, 0, 0x0C},
                                    {"HIDDEN", 'C', 5, 0, 1},
                                    {"B", 'B', 8, 2},
                                    {"Y", 'Y', 8, 4},
                                    {"T", 'T', 8},
                                    {"CB", 'C', 16, 0, 4},
                                    {"MB", 'M', 4, 0, 4},
                                    {"P", 'P', 4},
                                    {"W", 'W', 4},
                                    {"V", 'V', 255, 0, 2},
                                    {"Q", 'Q', 20},
                                    {"_NullFlags", '0', 1, 0, 5}},
                         .version = 0x32});
  EXPECT_EQ(Columns(*FoxPro()),
            "I 3 16 0 0,0 null integer\nID 3 16 0 0,0 auto-increment auto\nB 5 16 0 15,0 float\nY 6 16 0 0,0 currency\n"
            "T 135 16 0 0,0 date-time\nCB 128 16 16 0,0 bytes\nMB 128 128 0 0,0 blob\nP 128 128 0 0,0 blob\n"
            "W 128 128 0 0,0 blob\nV 129 0 255 0,0 null string\nQ 128 0 20 0,0 varbytes\n");
  EXPECT_EQ(Columns(*DBase()).substr(0, 50), "I 3 16 0 0,0 null integer\nID 3 16 0 0,0 null integ");
}

TEST_F(DbfValuesTest, ValuesUpToTheLimits) {
  const struct {
    const char* what;
    TDbfDraftField field;
    std::vector<std::string> values;
    std::string dbase;   // empty: not asked
    std::string foxpro;  // the same
  } kCases[] = {
      {"texts lose what fills them up, and nothing else",
       {"C", 'C', 4},
       {"ab  ", " a b", "    ", "x\0\0\0"s, "a\0b "s},
       "text ab;text  a b;text ;text x;text a\0b;"s,
       "text ab;text  a b;text ;text x;text a\0b;"s},
      {"numbers",
       {"N", 'N', 20, 2},
       {DbfRight("1.50", 20), DbfLeft("-7", 20), DbfRight("", 20), "12345678901234567.89", std::string(20, '*'),
        DbfRight("-.5", 20), DbfRight("+007.", 20), DbfRight("0000", 20), DbfRight("1e3x", 20)},
       "float 1.5;float -7;null;float 1.23456789012346E16;null;float -0.5;float 7;float 0;text 1e3x;",
       "text 1.50;text -7;null;text 12345678901234567.89;null;text -0.5;text 7;text 0;text 1e3x;"},
      {"truth values",
       {"L", 'L', 1},
       {"T", "y", "F", "n", "?", " ", "x", "\0"s},
       "truth True;truth True;truth False;truth False;null;null;null;null;",
       "truth True;truth True;truth False;truth False;null;null;null;null;"},
      {"days",
       {"D", 'D', 8},
       {"00010101", "99991231", "20240229", "20230229", "        ", "00000000", "00000101", "2024 1 1"},
       "moment 0001-01-01;moment 9999-12-31;moment 2024-02-29;text 20230229;null;null;text 00000101;text 2024 1 1;",
       ""},
      {"integers",
       {"I", 'I', 4},
       {DbfLittle(-2147483648LL), DbfLittle(2147483647), DbfLittle(0)},
       "",
       "int -2147483648;int 2147483647;int 0;"},
      {"floats; what is no number is null",
       {"B", 'B', 8, 2},
       {DbfDoubleBytes(-1.5e300), DbfDoubleBytes(0), "\0\0\0\0\0\0\xF8\x7F"s},
       "",
       "float -1.5E300;float 0;null;"},
      {"money to the last unit",
       {"Y", 'Y', 8, 4},
       {DbfLittle(12345, 8), DbfLittle(-1, 8), DbfLittle(INT64_MAX, 8), DbfLittle(INT64_MIN, 8)},
       "",
       "text 1.2345;text -0.0001;text 922337203685477.5807;text -922337203685477.5808;"},
      {"moments",
       {"T", 'T', 8},
       {DbfMomentBytes(2415019, 0), DbfMomentBytes(2451545, 43199999), DbfMomentBytes(0, 0), DbfLeft("", 8),
        DbfMomentBytes(1721426, 0), DbfMomentBytes(1721425, 0), DbfMomentBytes(5373484, 86399000),
        DbfMomentBytes(5373484, 86399999), DbfMomentBytes(5373485, 0)},
       "",
       "moment 1899-12-30;moment 2000-01-01 12:00:00;null;null;moment 0001-01-01;null;moment 9999-12-31 23:59:59;"
       "null;null;"},
  };
  for (const auto& test : kCases) {
    Put("t.dbf", Single(test.field, test.values, test.dbase.empty() ? 0x30 : 0x03));
    if (!test.dbase.empty()) EXPECT_EQ(Rows(*DBase()), test.dbase) << test.what;
    if (!test.foxpro.empty()) EXPECT_EQ(Rows(*FoxPro()), test.foxpro) << test.what;
  }
}

TEST_F(DbfValuesTest, TextsComeInTheCodePageOfTheFile) {
  const struct {
    int number;
    const char* bytes;
    const char* dbase;
    const char* foxpro;
  } kCases[] = {
      {0, "\x84\x81",
       "ä"
       "ü",
       "\xE2\x80\x9E\xEF\xBF\xBD"},  // U+201E, and no letter
      {0xEE, "\x84", "ä", "\xE2\x80\x9E"},
      {1, "\x84", "ä", "ä"},
      {2, "\xE1", "ß", "ß"},
      {3, "\xE4\x80", "ä€", "ä€"},
      {0x64, "\x9F", "č", "č"},
      {0x65, "\x80", "А", "А"},
      {0xC8, "\xE8", "č", "č"},
      {0xC9, "\xC0", "А", "А"},
      {0x7B, "\x83\x65", "テ", "テ"},
      {0x7A, "\xC4\xE3", "你", "你"},
  };
  for (const auto& test : kCases) {
    Put("t.dbf", Single({"A"s + test.bytes, 'C', 2}, {DbfLeft(test.bytes, 2)}, 3, test.number));
    EXPECT_EQ(Rows(*DBase()), "text "s + test.dbase + ";") << test.number;
    EXPECT_EQ(Rows(*FoxPro()), "text "s + test.foxpro + ";") << test.number;
    EXPECT_EQ(DBase()->Structure("t").columns[0].COLUMN_NAME, "A"s + test.dbase);
  }
}

// Each field of variable length has a length bit, each nullable one a null bit behind it.
TEST_F(DbfValuesTest, NullsAndLengthsOfVisualFoxPro) {
  Put("t.dbf", TDbfDraft{.fields = {{"A", 'C', 3},
                                    {"B", 'I', 4, 0, 2},
                                    {"V", 'V', 5, 0, 2},
                                    {"Q", 'Q', 4},
                                    {"D", 'D', 8, 0, 2},
                                    {"_NullFlags", '0', 1, 0, 5}},
                         .records = {" abc" + DbfLittle(1) + "12345" + "wxyz" + "20240102" + "\x00"s,
                                     " abc" + DbfLittle(1) + "a  \0\3"s + "\0yz\1"s + "20240102" + "\x0A"s,
                                     " abc" + DbfLittle(1) + "     " + "xyz\0"s + "20240102" + "\x1D"s},
                         .version = 0x32});
  EXPECT_EQ(Rows(*FoxPro()),
            "text abc|int 1|text 12345|text wxyz|moment 2024-01-02;"
            "text abc|int 1|text a  |text \0|moment 2024-01-02;"s
            "text abc|null|null|text |null;");
  Put("t.dbf",
      TDbfDraft{
          .fields = {{"V", 'V', 5}, {"_NullFlags", '0', 1, 0, 5}}, .records = {" abcd\x05\x01"}, .version = 0x32});
  EXPECT_EQ(Failure([&] { FoxPro()->Rows("t", kAllRows); }), "t.dbf: a value of 5 bytes in field \"V\" of 5");
}

}  // namespace
}  // namespace velmora
