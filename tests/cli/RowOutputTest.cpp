// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/RowOutput.h"

#include <gtest/gtest.h>

#include <sstream>

namespace velmora {
namespace {

TMemDataset Sample() {
  TMemDataset rows({{"n", EFieldKind::LargeInt},
                    {"d", EFieldKind::Bcd},
                    {"f", EFieldKind::Float},
                    {"s", EFieldKind::String},
                    {"b", EFieldKind::Blob},
                    {"day", EFieldKind::Date},
                    {"at", EFieldKind::DateTime},
                    {"t", EFieldKind::Time}});
  const TDateTime day = EncodeDate(2005, 1, 31);
  rows.AddRow({std::int64_t{-7}, std::string("-0012345678901234567890.10"), 1.5, std::string("a\tb\\\n\xFF"),
               std::string("\x00\xFF", 2), TMoment{day}, TMoment{day}, TMoment{EncodeTime(9, 5, 0)}});
  rows.AddRow({std::string("18446744073709551615"), std::string("NaN"), 1e300, std::string("x"), std::string(),
               TVariant(), TMoment{day + EncodeTime(1, 2, 3)}, TVariant()});
  return rows;
}

std::string Written(EFormat format, const std::optional<std::string>& error = std::nullopt) {
  std::ostringstream out;
  const std::unique_ptr<TRowOutput> output = MakeRowOutput(format, out);
  TMemDataset rows = Sample();
  output->Begin(rows.Fields());
  for (; !rows.Eof(); rows.Next()) output->Row(rows);
  output->End(error);
  return out.str();
}

TEST(RowOutputTest, JsonKeepsNumbersDatesAndBytes) {
  EXPECT_EQ(
      Written(EFormat::Json, "broken off"),
      "{\"columns\":[{\"name\":\"n\",\"type\":\"large integer\"},{\"name\":\"d\",\"type\":\"BCD\"},"
      "{\"name\":\"f\",\"type\":\"float\"},{\"name\":\"s\",\"type\":\"string\"},{\"name\":\"b\",\"type\":\"blob\"},"
      "{\"name\":\"day\",\"type\":\"date\"},{\"name\":\"at\",\"type\":\"date-time\"},{\"name\":\"t\",\"type\":"
      "\"time\"}],\"rows\":[[-7,-12345678901234567890.10,1.5,\"a\\tb\\\\\\n\xEF\xBF\xBD\",{\"base64\":\"AP8=\"},"
      "\"2005-01-31\",\"2005-01-31\",\"09:05:00\"],[18446744073709551615,\"NaN\",1e+300,\"x\",{\"base64\":\"\"},"
      "null,\"2005-01-31 01:02:03\",null]],\"error\":\"broken off\"}\n");
}

TEST(RowOutputTest, TextHasALinePerRow) {
  EXPECT_EQ(Written(EFormat::Text),
            "n\td\tf\ts\tb\tday\tat\tt\n"
            "-7\t-0012345678901234567890.10\t1.5\ta\\tb\\\\\\n\\xFF\tAP8=\t2005-01-31\t2005-01-31\t09:05:00\n"
            "18446744073709551615\tNaN\t1E300\tx\t\tNULL\t2005-01-31 01:02:03\tNULL\n");
}

}  // namespace
}  // namespace velmora
