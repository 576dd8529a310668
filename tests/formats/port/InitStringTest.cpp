// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/port/InitString.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"

namespace velmora {
namespace {

using testing::MessageOf;
using std::string_literals::operator""s;

constexpr char kNoEquals[] = "a part has no \"=\": write key=value;key=value, and a value that holds \";\" in quotes";
constexpr char kNotClosed[] = "the quote that opens here is not closed; a quote within a quoted value is doubled";
constexpr char kBehindQuote[] = "only \";\" may follow a quoted value; a quote within one is doubled";

TEST(InitStringTest, ValuesAreFoundByTheirKeys) {
  const struct {
    const char *text, *key, *value;
  } kCases[] = {
      {"Provider=MSDASQL;Data Source=shop", "data SOURCE", "shop"},
      {"Provider=MSDASQL;Data Source=shop;", "Provider", "MSDASQL"},
      {" ; ;; Data Source =\t shop floor \r\n;", "Data Source", "shop floor"},
      {"Password=\"\";Data Source=x", "Password", ""},
      {"Password=;Data Source=x", "Password", ""},
      {"Password=;Data Source=x", "Data Source", "x"},
      {"a=1;A=2;a=3", "a", "3"},
      {"a=\" x;y \" ; b=2", "a", " x;y "},
      {"a=\"x\"\"y\";b=2", "a", "x\"y"},
      {"a='x''y\"z';b=2", "a", "x'y\"z"},
      {"a=x'y\"z;b=2", "a", "x'y\"z"},
      {"a=x=y;b=2", "a", "x=y"},
      {"a==b=1", "a=b", "1"},
      {"a===1", "a=", "1"},
      {"a={x;b=2", "a", "{x"},
      {"a=größe", "a", "größe"},
      {"Extended Properties=\"Excel 8.0;HDR=Yes;IMEX=1\"", "Extended Properties", "Excel 8.0;HDR=Yes;IMEX=1"},
      {"a=1", "b", ""},
      {"", "a", ""},
  };
  for (const auto& c : kCases) EXPECT_EQ(TInitString(c.text).Value(c.key), c.value) << c.text;
  TInitString properties("a=;b=2");
  EXPECT_TRUE(properties.Has("A") && properties.Has("b") && !properties.Has("c"));
  properties.Set("B", "3");
  properties.Set("c", "4");
  EXPECT_EQ(properties.Value("b") + properties.Value("c"), "34");
}

TEST(InitStringTest, FaultsAreToldByTheirPositionAlone) {
  const struct {
    std::string text;
    int position;
    const char* fault;
  } kCases[] = {
      {"Password=secret;rest", 17, kNoEquals},
      {"Password=sec;ret", 14, kNoEquals},
      {"Password=\"x\"; secret ;", 15, kNoEquals},
      {"a==secret", 1, kNoEquals},
      {"a=1; =secret", 6, "the name before \"=\" is missing"},
      {"Password=\"secret", 10, kNotClosed},
      {"Password='secret\"", 10, kNotClosed},
      {"Password=\"secret\"\"", 10, kNotClosed},
      {"a=\"x\" secret", 7, kBehindQuote},
      {"a='it's secret'", 7, kBehindQuote},
      {"Password=sec\0ret"s, 13, "a NUL character cannot be part of it"},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(MessageOf([&] { const TInitString read(c.text); }),
              "Connection string, position " + std::to_string(c.position) + ": " + c.fault)
        << c.text;
}

TEST(InitStringTest, AnyTextCanBeAValue) {
  for (const char* plain : {"shop", "/a b/c.mdb", "it's", "x=y", "{a}", "C:\\x\\"}) EXPECT_EQ(InitValue(plain), plain);
  for (const char* value : {"", "a;b", " a", "a\t", "\"a\"", "\"", "'a", "=a", ";", "a;\"b\"", "größe;"})
    EXPECT_EQ(TInitString("x=" + InitValue(value) + ";y=1").Value("x"), value) << value;
}

}  // namespace
}  // namespace velmora
