// SPDX-License-Identifier: GPL-3.0-or-later

// Numbers, dates and values of rows, to and from text.

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "support/MessageOf.h"
#include "util/Clock.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Variant.h"
#include "util/Version.h"

namespace velmora {
namespace {

using testing::MessageOf;

TEST(FormatTest, FillsTextsAndNumbersOfEveryKind) {
  EXPECT_EQ(Format("%s.%s %d%%", std::string("a"), std::string_view("b"), std::size_t{5}), "a.b 5%");
  EXPECT_EQ(Format("%d", std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(FormatTest, ReadsIntegers) {
  const std::pair<std::string_view, std::int64_t> cases[] = {
      {"0", 0},    {"+12", 12},   {"  -12", -12},
      {"$1f", 31}, {" $FF", 255}, {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(TryStrToInt(text), value) << text;
  for (const char* text :
       {"9223372036854775808", "$FFFFFFFFFFFFFFFF", "", " ", "1 ", "1.0", "+-1", "+", "$", "$-1", "0x1", "a"})
    EXPECT_EQ(TryStrToInt(text), std::nullopt) << text;
  EXPECT_EQ(StrToInt("-2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(StrToInt64("2147483648"), 2147483648);
  EXPECT_EQ(MessageOf([] { StrToInt("2147483648"); }), "'2147483648' is not a valid integer value");
  EXPECT_THROW(StrToInt("'a'"), EConvertError);
}

TEST(FormatTest, ReadsFloats) {
  for (const auto& [text, value] : {std::pair{"1", 1.0}, {"-1.5", -1.5}, {"+.5", 0.5}, {"1.", 1.0}, {"1E-5", 1e-5}})
    EXPECT_EQ(TryStrToFloat(text), value) << text;
  for (const char* text : {"", " 1", "1 ", "1,5", "inf", "nan", "0x1", "1e", "+-1", "1e999", "."})
    EXPECT_EQ(TryStrToFloat(text), std::nullopt) << text;
  EXPECT_EQ(MessageOf([] { StrToFloat("1,5"); }), "'1,5' is not a valid floating point value");
}

TEST(FormatTest, WritesFloatsWithFifteenDigits) {
  const std::pair<double, std::string_view> cases[] = {
      {0, "0"},
      {-0.0, "0"},
      {1.5, "1.5"},
      {-100, "-100"},
      {0.1 + 0.2, "0.3"},
      {1.0 / 3, "0.333333333333333"},
      {0.0001, "0.0001"},
      {0.00001, "1E-5"},
      {-1.25e-10, "-1.25E-10"},
      {123456789012345, "123456789012345"},
      {1e14, "100000000000000"},
      {1e15, "1E15"},
      {1e20, "1E20"},
      {1.7e308, "1.7E308"},
      {std::numeric_limits<double>::infinity(), "INF"},
      {-std::numeric_limits<double>::infinity(), "-INF"},
      {std::nan(""), "NAN"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(FloatText(value), text);
}

TEST(DatesTest, CountsDaysFromTheEndOf1899) {
  EXPECT_EQ(EncodeDate(1899, 12, 30), 0);
  EXPECT_EQ(EncodeDate(1753, 1, 1), -53688);
  EXPECT_EQ(EncodeDate(1, 1, 1), -693593);
  EXPECT_EQ(EncodeDate(2000, 2, 29) + EncodeTime(12, 0, 0), 36585.5);
  EXPECT_EQ(EncodeTime(0, 0, 0, 864), 0.00001);
}

TEST(DatesTest, WritesDatesAndTimes) {
  struct TCase {
    TDateTime value;
    std::string_view text, shortText;
  };
  const TCase cases[] = {
      {EncodeDate(2024, 2, 29), "2024-02-29", "2024-02-29 00:00"},
      {EncodeDate(2024, 2, 29) + EncodeTime(1, 2, 3), "2024-02-29 01:02:03", "2024-02-29 01:02"},
      {EncodeDate(1600, 1, 1) + EncodeTime(23, 59, 59), "1600-01-01 23:59:59", "1600-01-01 23:59"},
      {EncodeDate(987, 6, 5), "0987-06-05", "0987-06-05 00:00"},
      {EncodeDate(2023, 12, 31) + EncodeTime(23, 59, 59, 600), "2024-01-01", "2024-01-01 00:00"},
      {0, "1899-12-30", "1899-12-30 00:00"},
      {0.25, "1899-12-30 06:00:00", "1899-12-30 06:00"},
      {-0.25, "1899-12-29 18:00:00", "1899-12-29 18:00"},
  };
  for (const TCase& c : cases) {
    EXPECT_EQ(DateTimeText(c.value), c.text);
    EXPECT_EQ(ShortDateTimeText(c.value), c.shortText);
    EXPECT_EQ(DateTimeText(ParseDateTime(c.text)), c.text);
  }
}

TEST(DatesTest, RefusesWhatIsNoDate) {
  EXPECT_EQ(ParseDateTime(""), 0);
  EXPECT_EQ(MessageOf([] { ParseDateTime("2024"); }), "Nothing to StrChop!");
  EXPECT_EQ(MessageOf([] { ParseDateTime("2024-01-01 10:00"); }), "Nothing to StrChop!");
  EXPECT_EQ(MessageOf([] { ParseDateTime("2024-x-01"); }), "'x' is not a valid integer value");
  EXPECT_EQ(MessageOf([] { ParseDateTime("2023-02-29"); }), "'2023-02-29' is not a valid date");
  EXPECT_EQ(MessageOf([] { ParseDateTime("0000-00-00"); }), "'0000-00-00' is not a valid date");
  EXPECT_EQ(MessageOf([] { ParseDateTime("2024-01-01 24:00:00"); }), "'24:00:00.000' is not a valid time");
  for (const double value : {-693594.0, 2958466.0, 1e300, std::nan("")})
    EXPECT_THROW(DateTimeText(value), EConvertError) << value;
  EXPECT_EQ(DateText(2958465), "9999-12-31");
}

TEST(DatesTest, TheSystemClockTellsADayOfOurTime) {
  EXPECT_GT(SystemClock().Now(), EncodeDate(2020, 1, 1));
  EXPECT_LT(SystemClock().Now(), EncodeDate(2200, 1, 1));
}

TEST(VariantTest, ConvertsEveryKind) {
  struct TCase {
    TVariant value;
    std::string_view text;
    std::int64_t whole;
    double number;
  };
  const TCase cases[] = {
      {TVariant(), "", 0, 0},
      {true, "True", 1, 1},
      {false, "False", 0, 0},
      {std::int64_t{-7}, "-7", -7, -7},
      {2.5, "2.5", 2, 2.5},  // halves go to the even number
      {3.5, "3.5", 4, 3.5},
      {TMoment{36585.25}, "2000-02-29 06:00:00", 36585, 36585.25},
      {std::string("12"), "12", 12, 12},
  };
  for (const TCase& c : cases) {
    EXPECT_EQ(VarToText(c.value), c.text);
    EXPECT_EQ(VarToInt(c.value), c.whole) << c.text;
    EXPECT_EQ(VarToFloat(c.value), c.number) << c.text;
  }
  EXPECT_THROW(VarToInt(std::string("1.5")), EConvertError);
  EXPECT_THROW(VarToFloat(std::string("")), EConvertError);
  EXPECT_THROW(VarToInt(9.3e18), EConvertError);
  EXPECT_EQ(VarToText(IfNull(TVariant(), std::string("none"))), "none");
  EXPECT_EQ(VarToText(IfNull(false, std::string("none"))), "False");
}

TEST(VersionTest, NamesTheBuildWhereThereIsOne) {
  EXPECT_EQ(VersionText(1, 2, 0), "1.2");
  EXPECT_EQ(VersionText(1, 2, 3), "1.2.3");
}

TEST(ErrorsTest, RunGuardedRunsTheEndInBothCasesAndKeepsTheError) {
  int ends = 0;
  const auto end = [&] { ++ends; };
  const auto fail = [] { RaiseError("body"); };
  const auto failToEnd = [] { RaiseError("end"); };
  const auto nothing = [] {};
  EXPECT_EQ(MessageOf([&] { RunGuarded(nothing, end); }), "nothing raised");
  EXPECT_EQ(MessageOf([&] { RunGuarded(fail, end); }), "body");
  EXPECT_EQ(ends, 2);
  EXPECT_EQ(MessageOf([&] { RunGuarded(nothing, failToEnd); }), "end");
  EXPECT_EQ(MessageOf([&] { RunGuarded(fail, failToEnd); }), "end");
  EXPECT_THROW(RunGuarded([] { RaiseAbstract(); }, end), EAbstractError);
}

}  // namespace
}  // namespace velmora
