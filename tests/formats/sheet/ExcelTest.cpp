// Excel workbooks: those of an independent writer, those laid out by hand, and what is none.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>

#include "engines/file/TextRig.h"
#include "engines/oledb/DBConnExcel.h"
#include "formats/sheet/ExcelFile.h"
#include "formats/sheet/SheetText.h"
#include "sandbox/OwnProcessReaders.h"
#include "support/ExcelFile.h"
#include "support/MessageOf.h"
#include "support/ParadoxFile.h"
#include "support/PerlWorkbook.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::Biff5File;
using testing::BiffNumber;
using testing::BiffRecord;
using testing::ColumnsOf;
using testing::CompoundFile;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using testing::MessageOf;
using testing::PutFile;
using testing::RowsOf;
using testing::Shown;
using ::testing::StartsWith;
using testing::TablesOf;
using testing::WriteWorkbook;

class ExcelTest : public ::testing::Test {
 protected:
  std::unique_ptr<TFileReader> Open(bool names = true, bool mixed_as_text = true) const {
    return OpenExcelFileHere(path_, names, mixed_as_text);
  }
  std::string Fault() const {
    return MessageOf([&] { Open(); });
  }

  testing::TScratchFolder folder_;
  const std::string path_ = folder_ / "shop.xls";
};

TEST_F(ExcelTest, Workbook) {
  WriteWorkbook(path_,
                "sheet\tOrders\n"
                "text\t0\t0\tid\ntext\t0\t1\tName\ntext\t0\t2\tday\ntext\t0\t3\tat\ntext\t0\t4\twhen\n"
                "number\t1\t0\t1\ntext\t1\t1\t\xC4\x8C"
                "ech \xE2\x82\xAC\ndate\t1\t2\t38000\ntime\t1\t3\t0.75\n"
                "moment\t1\t4\t38000.75\n"
                "number\t2\t0\t123456789012\nblank\t2\t1\t\nnumber\t3\t0\t-0.1\nblank\t9\t9\t\n"
                "sheet\tMy Sheet\nnumber\t3\t2\t5\nsheet\tEmpty\nblank\t3\t3\t\nsheet\tGr\xC3\xB6\xC3\x9F"
                "e\ntext\t0\t0\tx\n");
  const auto reader = Open();
  EXPECT_EQ(TablesOf(*reader),
            "Orders$, 'My Sheet$', Gr\xC3\xB6\xC3\x9F"
            "e$");
  EXPECT_EQ(Shown(reader->Structure("Orders$")), "id 5, Name 130(255), day 7, at 7, when 7");
  EXPECT_EQ(RowsOf(*reader, "Orders$"),
            "1|\xC4\x8C"
            "ech \xE2\x82\xAC|2004-01-14|1899-12-30 18:00:00|2004-01-14 18:00:00/"
            "123456789012|-|-|-|-/-0.1|-|-|-|-/");
  EXPECT_EQ(Shown(reader->Structure("'My Sheet$'")), "5 130(255)");
  const auto unnamed = Open(false);
  EXPECT_EQ(Shown(unnamed->Structure("Orders$")), "F1 130(255), F2 130(255), F3 130(255), F4 130(255), F5 130(255)");
  EXPECT_THAT(RowsOf(*unnamed, "Orders$"), StartsWith("id|Name|day|at|when/1|\xC4\x8C"
                                                      "ech \xE2\x82\xAC|2004-01-14|18:00:00|2004-01-14 18:00:00/"));
  EXPECT_THAT(Shown(Open(false, false)->Structure("Orders$")), StartsWith("F1 5, F2 130(255), F3 7, "));
}

TEST_F(ExcelTest, DatesThatTheCalendarDoesNotHave) {
  WriteWorkbook(path_,
                "sheet\ta\ndate\t0\t0\t60\ndate\t1\t0\t3000000\nmoment\t2\t0\t38000.999999\ntime\t3\t0\t0.999999\n");
  EXPECT_EQ(RowsOf(*Open(false), "a$"), "1900-02-29/10113-07-20/2004-01-15/00:00:00/");
}

TEST_F(ExcelTest, ResultsOfFormulasAreNotRead) {
  WriteWorkbook(path_, "sheet\ta\ntext\t0\t0\tn\nformula\t1\t0\t=1+1\t2\ntext\t2\t0\tx\n");
  EXPECT_EQ(RowsOf(*Open(), "a$"), "-/x/");
}

TEST_F(ExcelTest, AsManyRowsAsThereCanBe) {
  WriteWorkbook(path_, "sheet\ta\ncount\t65536\t2\n");
  const auto reader = Open(false);
  EXPECT_EQ(reader->Rows("a$", kAllRows).rows.size(), 65536U);
  EXPECT_THAT(RowsOf(*reader, "a$"), EndsWith("131069|131070/131071|131072/"));
  EXPECT_EQ(Shown(reader->Rows("a$", 1).rows), "1|2/");
}

// --- BIFF5, of records that are laid out here

std::string Cell(std::uint16_t type, std::uint64_t row, std::uint64_t column, const std::string& data,
                 std::uint64_t format = 0) {
  return BiffRecord(type, BiffNumber(row, 2) + BiffNumber(column, 2) + BiffNumber(format, 2) + data);
}
std::string Number(std::uint64_t row, std::uint64_t column, double value, std::uint64_t format = 0) {
  return Cell(0x0203, row, column, BiffNumber(std::bit_cast<std::uint64_t>(value), 8), format);
}
std::string Label(std::uint64_t row, std::uint64_t column, const std::string& text) {
  return Cell(0x0204, row, column, BiffNumber(text.size(), 2) + text);
}

TEST_F(ExcelTest, Biff5) {
  const std::string cells =
      Label(0, 0, "caf\xE9") + Label(0, 1, "day") + Label(0, 2, "yes") + Label(0, 3, "rk") + Number(1, 0, 1.5) +
      Number(1, 1, 38000, 1) + Cell(0x0205, 1, 2, BiffNumber(1, 2)) + Cell(0x0205, 2, 2, BiffNumber(0x0107, 2)) +
      Cell(0x027E, 1, 3, BiffNumber((1234U << 2U) | 3U, 4)) + Number(2, 0, std::bit_cast<double>(0x7FF0000000000000U));
  PutFile(path_, Biff5File({{"caf\xE9", cells}, {"b", Number(0, 0, 1)}}));
  const auto reader = Open();
  EXPECT_EQ(TablesOf(*reader), "caf\xC3\xA9$, b$");
  EXPECT_EQ(Shown(reader->Structure("caf\xC3\xA9$")), "caf\xC3\xA9 5, day 7, yes 5, rk 5");
  EXPECT_EQ(RowsOf(*reader, "caf\xC3\xA9$"), "1.5|2004-01-14|1|12.34/-|-|1|-/")
      << "the library takes a faulty value for true";
}

TEST_F(ExcelTest, ASheetThatClaimsMoreThanItHas) {
  PutFile(path_, Biff5File({{"a", Number(0, 0, 1) + Number(1, 1, 2), 65535, 256}}));
  EXPECT_EQ(RowsOf(*Open(false), "a$"), "1|-/-|2/");
}

TEST_F(ExcelTest, WhatIsNoWorkbookIsNamed) {
  struct {
    std::string bytes;
    const char* fault;
  } const cases[] = {
      {"", "the file is empty"},
      {"id;name\r\n1;Ann\r\n",
       "it is no Excel workbook. Open it in a spreadsheet program and save it as an Excel 97-2003 workbook (.xls)"},
      {"PK\x03\x04 more", "it is a workbook of Excel 2007 or later, or another Zip archive. Open it"},
      {"\r\n <html><table>", "it is a web page or an XML document, whatever its name says. Open it"},
      {"\xEF\xBB\xBF<?xml version=\"1.0\"?>", "it is a web page or an XML document"},
      {CompoundFile("WordDocument", "text"), "it holds no workbook that can be read"},
      {CompoundFile("Workbook", std::string(5000, '\xFF')), "freexl cannot take the workbook apart"},
      {"\xD0\xCF\x11\xE0", "the workbook is damaged (freexl's error "},
      {Biff5File({{"a", Number(0, 0, 1)}}, BiffRecord(0x002F, BiffNumber(0, 4))),
       "the workbook is protected by a password"},
      {Biff5File({{"a", Number(9, 0, 1), 3, 3}}), "freexl cannot take the workbook apart"},
  };
  for (const auto& each : cases) {
    PutFile(path_, each.bytes);
    EXPECT_THAT(Fault(), StartsWith("Cannot read " + path_ + ": " + each.fault));
  }
  WriteWorkbook(path_, "sheet\ta\ntext\t0\t0\t\n");
  EXPECT_THAT(Fault(), HasSubstr("or has cells that hold an empty text"));
  EXPECT_EQ(MessageOf([&] { OpenExcelFile(folder_ / "none.xls", true, true); }),
            "Cannot open " + (folder_ / "none.xls") + ": No such file or directory");
  EXPECT_THAT(MessageOf([&] { OpenExcelFile(folder_.Path(), true, true); }), HasSubstr("it is no regular file"));
}

TEST_F(ExcelTest, InAProcessOfItsOwn) {
  PutFile(path_, Biff5File({{"a", Label(0, 0, "n") + Number(1, 0, 7)}}));
  const auto reader = OpenExcelFile(path_, true, true);
  EXPECT_EQ(TablesOf(*reader), "a$");
  EXPECT_EQ(Shown(reader->Structure("a$")), "n 5");
  EXPECT_EQ(RowsOf(*reader, "a"), "7/");
  EXPECT_THAT(MessageOf([&] { reader->Structure("b$"); }),
              HasSubstr("There is no sheet \"b$\" with cells in " + path_));
}

TEST_F(ExcelTest, TheEngine) {
  const std::string cells = Label(0, 0, "id") + Label(0, 1, "name") + Label(0, 2, "day") + Number(1, 0, 1) +
                            Label(1, 1, "Ann") + Number(1, 2, 38000, 1) + Label(2, 0, "two");
  PutFile(path_, Biff5File({{"My Sheet", cells}, {"b", Number(0, 0, 1)}, {"none", {}}}));
  struct {
    bool HDR, IMEX;
    const char *columns, *rows;
  } const cases[] = {
      {true, true, "id <VARCHAR> 255, name <VARCHAR> 255, day <DATE>", "1|Ann|2004-01-14/two|-|-/"},
      {true, false, "id <DOUBLE> 15,0, name <VARCHAR> 255, day <DATE>", "1|Ann|2004-01-14/-|-|-/"},
      {false, true, "F1 <VARCHAR> 255, F2 <VARCHAR> 255, F3 <VARCHAR> 255", "id|name|day/1|Ann|2004-01-14/two|-|-/"},
  };
  for (const auto& each : cases) {
    TDBConnExcel conn(path_, each.HDR, each.IMEX);
    conn.Connect();
    EXPECT_EQ(conn.meta().tTables.Rows().size(), 2U);
    EXPECT_EQ(ColumnsOf(conn, "'My Sheet$'"), each.columns);
    for (const char* name : {"'My Sheet$'", "My Sheet$", "my sheet"})
      EXPECT_EQ(Shown(*conn.OpenTable(name)), each.rows);
    EXPECT_EQ(conn.GetRecordCount("b$"), each.HDR ? 0 : 1);
  }
}

}  // namespace
}  // namespace velmora
