// SPDX-License-Identifier: GPL-3.0-or-later

// Stored values of Access files one by one.

#include "formats/mdb/MdbText.h"

#include <gtest/gtest.h>

#include "formats/mdb/MdbPages.h"
#include "support/ByteText.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::BytesOf;

TEST(MdbTextTest, Utf16) {
  for (const std::string& text : {""s, "plain"s, "Größe €"s, "\xF0\x9F\x98\x80!"s, "a\0b"s})
    EXPECT_EQ(TextOfUtf16(Utf16OfText(text)), text);
  const struct {
    std::string stored;
    std::optional<std::string> text;
  } kTexts[] = {
      {"\xFF\xFE", ""},
      {"\xFF\xFE"s + "packed\xE4", "packed\xC3\xA4"},
      {"\xFF\xFE"s + "a\0\xAC\x20\0b"s, "a€b"},
      {"\xFF\xFE"s + "a\0\xAC\x20"s, "a€"},
      {"\xFF\xFE"s + "a\0\xAC"s, std::nullopt},
      {"a\0b"s, std::nullopt},
      {"\x3D\xD8"s, "\xEF\xBF\xBD"},  // half a pair
      {"\x00\xDE\x3D\xD8"s, "\xEF\xBF\xBD\xEF\xBF\xBD"},
  };
  for (const auto& [stored, text] : kTexts) EXPECT_EQ(TextOfUtf16(stored), text);
  EXPECT_EQ(Utf16OfText("\xFF"), "\xFD\xFF");
}

TEST(MdbTextTest, Numbers) {
  const auto money = [](std::int64_t units) { return TextOfMoney(LittleBytes(static_cast<std::uint64_t>(units), 8)); };
  EXPECT_EQ(money(0), "0.0000");
  EXPECT_EQ(money(-1), "-0.0001");
  EXPECT_EQ(money(12345), "1.2345");
  EXPECT_EQ(money(INT64_MAX), "922337203685477.5807");
  EXPECT_EQ(money(INT64_MIN), "-922337203685477.5808");
  EXPECT_EQ(TextOfNumeric(BytesOf("80 00*12 le4:12340"), 3), "-12.340");
  EXPECT_EQ(TextOfNumeric(BytesOf("00*9 le4:1 le4:7"), 0), "4294967303");
  EXPECT_EQ(TextOfNumeric(BytesOf("00*13 le4:7"), 5), "0.00007");
  EXPECT_EQ(TextOfNumeric("\x80"s + std::string(16, '\0'), 2), "0.00");
  EXPECT_EQ(TextOfNumeric("\0"s + std::string(16, '\xFF'), 0), "340282366920938463463374607431768211455");
  EXPECT_EQ(TextOfMoney("1234567"), std::nullopt);
  EXPECT_EQ(TextOfNumeric("1234567", 0), std::nullopt);
  EXPECT_EQ(TextOfGuid("1234567"), std::nullopt);
}

TEST(MdbTextTest, Moments) {
  const auto moment = [](double days) { return MomentOf(DoubleBytes(days)); };
  EXPECT_EQ(moment(1.25), EncodeDate(1899, 12, 31) + 0.25);
  EXPECT_EQ(moment(-1.25), EncodeDate(1899, 12, 29) + 0.25);
  EXPECT_EQ(moment(-0.5), 0.5);
  EXPECT_EQ(moment(EncodeDate(100, 1, 1)), EncodeDate(100, 1, 1));
  EXPECT_EQ(moment(-1e300), std::nullopt);
  EXPECT_EQ(MomentOf("short"), std::nullopt);
}

}  // namespace
}  // namespace velmora
