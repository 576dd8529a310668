#include "formats/paradox/ParadoxValues.h"

#include <gtest/gtest.h>

#include <cmath>

#include "formats/paradox/ParadoxText.h"
#include "support/ParadoxFile.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::PxMemoField;
using testing::Shown;

std::string Decoded(int type, const std::string& bytes, TVariant before = std::string("before")) {
  TPxMemoFile memos("/nowhere/t.db");
  const TPxField field{"f", static_cast<std::uint8_t>(type), 1, bytes.size()};
  DecodePxField(field, ("\xEE" + bytes + "\xEE").data(), memos, before);
  EXPECT_FALSE(memos.IsOpen());
  return Shown(before);
}

TEST(ParadoxValuesTest, BytesToValues) {
  const struct {
    int type;
    std::string bytes, value;
  } kCases[] = {
      {pxAlpha, "abc"s, "text abc"},
      {pxAlpha, " \tab c \0xyz"s, "text ab c"},
      {pxAlpha, "\0\0\0"s, "text "},
      {pxAlpha, "\xE4\xF6"s, "text \xE4\xF6"},
      {pxShort, "\x80\x01"s, "int 1"},
      {pxShort, "\x7F\xFF"s, "int -1"},
      {pxShort, "\x00\x01"s, "int -32767"},
      {pxShort, "\x80\x00"s, "int 0"},
      {pxShort, "\x00\x00"s, "null"},
      {pxLong, "\x80\x00\x00\x01"s, "int 1"},
      {pxLong, "\x7F\xFF\xFF\xFF"s, "int -1"},
      {pxLong, "\xFF\xFF\xFF\xFF"s, "int 2147483647"},
      {pxLong, "\x00\x00\x00\x01"s, "int -2147483647"},
      {pxLong, "\x00\x00\x00\x00"s, "null"},
      {pxAutoInc, "\x80\x00\x01\x00"s, "int 256"},
      {pxNumber, "\xBF\xF8\x00\x00\x00\x00\x00\x00"s, "float 1.5"},
      {pxNumber, "\x40\x07\xFF\xFF\xFF\xFF\xFF\xFF"s, "float -1.5"},
      {pxNumber, "\x80\x00\x00\x00\x00\x00\x00\x00"s, "float 0"},
      {pxNumber, "\xFF\xF8\x00\x00\x00\x00\x00\x00"s, "null"},
      {pxNumber, "\x00\x00\x00\x00\x00\x00\x00\x00"s, "null"},
      {pxCurrency, "\xC0\x59\x00\x00\x00\x00\x00\x00"s, "float 100"},
      {pxLogical, "\x81"s, "int 1"},
      {pxLogical, "\x80"s, "int 0"},
      {pxLogical, "\x01"s, "int 0"},
      {pxLogical, "\x00"s, "null"},
      {pxDate, "\x80\x0A\x95\x5B"s, "float 1"},
      {pxDate, "\x80\x00\x00\x01"s, "float -693593"},
      {pxDate, "\x80\x00\x00\x00"s, "float 0"},
      {pxDate, "\x00\x00\x00\x00"s, "null"},
      {pxTime, "\x82\x93\x2E\x00"s, "float 0.5"},
      {pxTime, "\x80\x00\x00\x00"s, "float 0"},
      {pxTimestamp, testing::PxFloat((693594 + 1.25) * 86400000), "float 1.25"},
      {pxTimestamp, "\x80\x00\x00\x00\x00\x00\x00\x00"s, "float 0"},
      {pxTimestamp, "\x00\x00\x00\x00\x00\x00\x00\x00"s, "null"},
      {pxMemo, PxMemoField("hello", 0, 5), "text hello"},
      {pxMemo, PxMemoField("hello", 0, 3), "text hel"},
      {pxMemo, PxMemoField("hello", 0, 0), "null"},
      {pxMemo, PxMemoField("hello", 0, -1), "null"},
      {pxFmtMemo, PxMemoField("a\0b"s, 0, 3), "text a\0b"s},
      {pxBinary, PxMemoField("\0\xFF"s, 0, 2), "text \0\xFF"s},
      {pxOLE, PxMemoField("  ", 0, 2), "text   "},
      {pxGraphic, PxMemoField("", 0, 0), "null"},
      {pxBCD, std::string(17, '\xC0'), "text before"},
      {pxBytes, "abc"s, "text before"},
      {7, "abc"s, "text before"},
      {0, ""s, "text before"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Decoded(c.type, c.bytes), c.value) << "type " << c.type;
}

TEST(ParadoxValuesTest, BothWaysAcrossTheRanges) {
  for (const std::int64_t number : {-32767, -256, -255, -1, 0, 1, 127, 128, 255, 256, 32767})
    EXPECT_EQ(Decoded(pxShort, testing::PxInteger(number, 2)), "int " + std::to_string(number));
  for (const double number : {-1e300, -2.5, -1e-300, -0.0, 5e-324, 1e-300, 0.1, 3e8, 1e300})
    EXPECT_EQ(Decoded(pxNumber, testing::PxFloat(number)), Shown(number));
}

}  // namespace
}  // namespace velmora
