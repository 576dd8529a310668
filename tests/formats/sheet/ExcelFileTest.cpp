// SPDX-License-Identifier: GPL-3.0-or-later

// Workbooks beyond the cases of tests/data/formats.

#include "formats/sheet/ExcelFile.h"
#include "formats/sheet/CellFormats.h"
#include "formats/sheet/ZipParts.h"
#include "support/FormatCase.h"
#include "support/MessageOf.h"
#include "support/ReaderText.h"
#include "support/ScratchFolder.h"
#include "support/ShownValues.h"
#include "util/Files.h"

namespace velmora::testing {
namespace {

TEST(ExcelFileTest, AsManyRowsAsThereCanBe) {
  const TScratchFolder folder;
  TFormatCase{.files = {{"!workbook.pl shop.xls", "sheet\ta\ncount\t65536\t2\n"}}, .asks = {}}.PutInto(folder.Path());
  const auto reader = OpenExcelFileHere(folder / "shop.xls", false, true);
  EXPECT_EQ(reader->Rows("a$", kAllRows).rows.size(), 65536U);
  EXPECT_EQ(reader->Rows("a$", kAllRows).rows.back(), (TMemDataset::TRow{131071.0, 131072.0}));
  EXPECT_EQ(RowsText(reader->Rows("a$", 1)), "row float 1|float 2\n");
}

std::string MessageOfReading(const std::string& path) {
  return MessageOf([&] { ReadExcelSheets(path); });
}

TEST(ExcelFileTest, AnArchiveThatIsSpoiltOrCutGivesItsRowsOrAMessage) {
  const TScratchFolder folder;
  const std::string path = folder / "shop.xlsx";
  FormatCase("excel-2007").PutInto(folder.Path());
  const std::string sound = ReadFileBytes(path);
  int refused = 0;
  for (std::size_t at = 0; at < sound.size(); at += 2) {
    std::string spoilt = sound;
    spoilt[at] = static_cast<char>(spoilt[at] ^ 1 << at / 2 % 8);
    for (const std::string& bytes : {spoilt, sound.substr(0, at)}) {
      PutFile(path, bytes);
      const std::string message = MessageOfReading(path);
      refused += message != "nothing raised" ? 1 : 0;
      EXPECT_TRUE(message == "nothing raised" || message.find(path) != message.npos) << at << ": " << message;
    }
  }
  EXPECT_GT(refused, static_cast<int>(sound.size() / 2)) << "whatever is cut, and most of what is changed";
}

TEST(ExcelFileTest, ASmallArchiveThatUnpacksToMuchIsRefused) {
  const TScratchFolder folder;
  const std::string part = "shop.xlsx!xl/texts.xml";
  const TFormatCase files = FormatCase("excel-2007");
  const auto padded = [&](std::size_t size) {
    files.With(part, std::string(size, ' ') + files.Bytes(part)).PutInto(folder.Path());
    return MessageOfReading(folder / "shop.xlsx");
  };
  EXPECT_EQ(padded(kGrowthAtWill / 2), "nothing raised");
  EXPECT_THAT(padded(kGrowthAtWill + 1), ::testing::HasSubstr("unpacks to more than 300 times its size"));
}

TEST(ExcelFileTest, WhichPatternsAreThoseOfMoments) {
  for (const char* pattern : {"yyyy-mm-dd", "D/M/YY h:mm AM/PM", "[h]:mm:ss", "[ss].00", "mm:ss.0;@", "[$-409]d-mmm;@",
                              "[Red]hh\\:mm", "\"0\"yyyy;0", "ggge", "_(d_)", "[=0]?;[<1][hh]:mm"})
    EXPECT_TRUE(IsMomentPattern(pattern)) << pattern;
  for (const char* pattern : {"General", "0.00E+00", "#,##0 \"days\"", "[Red]0;[Blue]-0", "@", "", "0 Std", "# ?/?",
                              "0 Std;-0 Std", "\\d0", "[$DM-407] 0", "\"d", "[", "\\"})
    EXPECT_FALSE(IsMomentPattern(pattern)) << pattern;
}

TEST(ExcelFileTest, NumbersAsMoments) {
  TCellFormats from_1900, from_1904;
  from_1904.CountFrom1904();
  for (TCellFormats* formats : {&from_1900, &from_1904})
    for (const unsigned format : {0U, 22U}) formats->AddStyle(format);
  const auto text = [](const TCellFormats& formats, double number) { return ShownValue(formats.Value(number, 1)); };
  EXPECT_EQ(text(from_1900, 1), "moment 1900-01-01");
  EXPECT_EQ(text(from_1900, 59.5), "moment 1900-02-28 12:00:00");
  EXPECT_EQ(text(from_1900, 60.5), "text 1900-02-29 12:00:00");
  EXPECT_EQ(text(from_1900, 61), "moment 1900-03-01");
  EXPECT_EQ(text(from_1900, 0.9999999), "moment 1899-12-30") << "rounded to midnight, and no day of its own";
  EXPECT_EQ(text(from_1900, 2958465.5), "moment 9999-12-31 12:00:00");
  EXPECT_EQ(text(from_1900, 2958466), "float 2958466");
  EXPECT_EQ(text(from_1900, -1), "float -1");
  EXPECT_EQ(text(from_1904, 1), "moment 1904-01-02");
  EXPECT_EQ(ShownValue(from_1900.Value(61, 0)), "float 61");
  EXPECT_EQ(ShownValue(from_1900.Value(61, 9)), "float 61") << "a style that there is not";
}

}  // namespace
}  // namespace velmora::testing
