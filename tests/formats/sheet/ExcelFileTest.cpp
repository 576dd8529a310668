// Workbooks beyond the cases of tests/data/formats.

#include "formats/sheet/ExcelFile.h"
#include "support/FormatCase.h"
#include "support/ReaderText.h"
#include "support/ScratchFolder.h"

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

}  // namespace
}  // namespace velmora::testing
