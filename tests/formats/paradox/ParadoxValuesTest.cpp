// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/paradox/ParadoxValues.h"

#include "support/ByteText.h"
#include "support/ShownValues.h"

namespace velmora::testing {
namespace {

TEST(ParadoxValuesTest, BytesToValues) {
  const struct {
    int type;
    const char *bytes, *value;
  } kCases[] = {
      {pxAlpha, R"("abc")", "text abc"},
      {pxAlpha, R"(" " 09 "ab c " 00 "xyz")", "text ab c"},
      {pxAlpha, "00*3", "text "},
      {pxAlpha, "E4 F6", "text \\xE4\\xF6"},
      {pxShort, "80 01", "int 1"},
      {pxShort, "7F FF", "int -1"},
      {pxShort, "81 00", "int 256"},
      {pxShort, "00 01", "int -32767"},
      {pxShort, "80 00", "int 0"},
      {pxShort, "00 00", "null"},
      {pxLong, "80 00 00 01", "int 1"},
      {pxLong, "7F FF FF FF", "int -1"},
      {pxLong, "FF FF FF FF", "int 2147483647"},
      {pxLong, "00 00 00 01", "int -2147483647"},
      {pxLong, "00*4", "null"},
      {pxAutoInc, "80 00 01 00", "int 256"},
      {pxNumber, "BF F8 00*6", "float 1.5"},
      {pxNumber, "40 07 FF*6", "float -1.5"},
      {pxNumber, "01 C8 1B C3 77 FF 8A 63", "float -1E300"},
      {pxNumber, "BF B9 99*5 9A", "float 0.1"},
      {pxNumber, "80 00*7", "float 0"},
      {pxNumber, "FF F8 00*6", "null"},
      {pxNumber, "00*8", "null"},
      {pxCurrency, "C0 59 00*6", "float 100"},
      {pxLogical, "81", "int 1"},
      {pxLogical, "80", "int 0"},
      {pxLogical, "01", "int 0"},
      {pxLogical, "00", "null"},
      {pxDate, "80 0A 95 5B", "float 1"},
      {pxDate, "80 00 00 01", "float -693593"},
      {pxDate, "80 00 00 00", "float 0"},
      {pxDate, "00*4", "null"},
      {pxTime, "82 93 2E 00", "float 0.5"},
      {pxTime, "80 00 00 00", "float 0"},
      {pxTimestamp, "C2 CB 40 60 BC 25 80 00", "float 1.25"},
      {pxTimestamp, "80 00*7", "float 0"},
      {pxTimestamp, "00*8", "null"},
      // A memo's beginning, its place, its length, a number.
      {pxMemo, R"("hello" 00*4 le4:5 01 00)", "text hello"},
      {pxMemo, R"("hello" 00*4 le4:3 01 00)", "text hel"},
      {pxMemo, R"("hello" 00*4 le4:0 01 00)", "null"},
      {pxMemo, R"("hello" 00*4 le4:-1 01 00)", "null"},
      {pxFmtMemo, R"("a" 00 "b" 00*4 le4:3 01 00)", "text a\\x00b"},
      {pxBinary, "00 FF 00*4 le4:2 01 00", "text \\x00\\xFF"},
      {pxOLE, "20*2 00*4 le4:2 01 00", "text   "},
      {pxGraphic, "00*4 le4:0 01 00", "null"},
      // These stay what they were.
      {pxBCD, "C0*17", "text before"},
      {pxBytes, R"("abc")", "text before"},
      {7, R"("abc")", "text before"},
      {0, "", "text before"},
  };
  for (const auto& c : kCases) {
    const std::string bytes = BytesOf(c.bytes);
    TPxMemoFile memos("/nowhere/t.db");
    TVariant value = std::string("before");
    DecodePxField({"f", static_cast<std::uint8_t>(c.type), 1, bytes.size()}, ("\xEE" + bytes + "\xEE").data(), memos,
                  value);
    EXPECT_EQ(ShownValue(value), c.value) << c.type << " " << c.bytes;
    EXPECT_FALSE(memos.IsOpen());
  }
}

}  // namespace
}  // namespace velmora::testing
