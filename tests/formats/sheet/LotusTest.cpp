// Sheets of Lotus 1-2-3, laid out by hand.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engines/file/TextRig.h"
#include "engines/oledb/DBConnLotus.h"
#include "formats/sheet/LotusFile.h"
#include "formats/sheet/SheetText.h"
#include "sandbox/OwnProcessReaders.h"
#include "support/LotusFile.h"
#include "support/MessageOf.h"
#include "support/ParadoxFile.h"
#include "support/ScratchFolder.h"

namespace velmora {
namespace {

using testing::ColumnsOf;
using ::testing::HasSubstr;
using testing::MessageOf;
using testing::PutFile;
using testing::RowsOf;
using testing::Shown;
using ::testing::StartsWith;
using testing::TablesOf;
using testing::TWkFile;
using testing::wkDate;
using testing::wkTime;

class LotusTest : public ::testing::Test {
 protected:
  std::unique_ptr<TFileReader> Open() const { return OpenLotusFileHere(path_); }

  testing::TScratchFolder folder_;
  const std::string path_ = folder_ / "shop.wk4";
};

TWkFile Shop() {
  return {.sheets = {{"Orders",
                      {{0, 0, "id"},
                       {0, 1, "caf\x82"},
                       {0, 2, "day"},
                       {0, 3, "at"},
                       {0, 4, "mixed"},
                       {0, 5, "sum"},
                       {1, 0, 1.0},
                       {1, 1, "\x84\x94\x81\xE1 \x9B"},
                       {1, 2, 38000.0, wkDate},
                       {1, 3, 0.75, wkTime},
                       {1, 4, 0.123456789},
                       {1, 5, 2.5, testing::wkGeneral, true},
                       {2, 0, -123456789012.0},
                       {2, 2, 36526.0, wkDate},
                       {2, 4, "x  y"}}},
                     {"Empty"},
                     {"My Sheet", {{3, 2, "a.b"}, {4, 2, 7.0}}}}};
}

TEST_F(LotusTest, Sheets) {
  for (const bool release4 : {false, true}) {
    TWkFile shop = Shop();
    shop.release4 = release4;
    PutFile(path_, shop.Bytes());
    const auto reader = Open();
    EXPECT_EQ(TablesOf(*reader), "Orders:, My Sheet:");
    EXPECT_EQ(Shown(reader->Structure("Orders:")), "id 5, caf\xC3\xA9 130(255), day 7, at 7, mixed 130(255), sum 5");
    EXPECT_EQ(RowsOf(*reader, "Orders:"),
              "1|\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F \xC3\xB8|2004-01-14|1899-12-30 18:00:00|0.123456789|2.5/"
              "-123456789012|-|2000-01-01|-|x  y|-/");
    EXPECT_EQ(Shown(reader->Structure("My Sheet:")), "a#b 5");
    EXPECT_EQ(RowsOf(*reader, "my sheet"), "7/");
  }
}

TEST_F(LotusTest, SheetsThatOnlyTheHeadCounts) {
  TWkFile shop = Shop();
  shop.sheets_claimed = 9;
  PutFile(path_, shop.Bytes());
  EXPECT_EQ(TablesOf(*Open()), "Orders:, My Sheet:");
}

// The library does so; if it mends its ways, the manual wants a word less.
TEST_F(LotusTest, WhatTheLibraryMakesOfDatesWithATime) {
  PutFile(path_, TWkFile{.sheets = {{"a",
                                     {{0, 0, "n"},
                                      {0, 1, "t"},
                                      {1, 0, 38000.25, wkDate},
                                      {2, 0, 38000.75, wkDate},
                                      {1, 1, 0.999999, wkTime},
                                      {2, 1, 1.5, wkTime},
                                      {3, 0, 3000000.0, wkDate}}}}}
                     .Bytes());
  EXPECT_EQ(RowsOf(*Open(), "a:"), "2004-01-14|1899-12-30/2004-01-15|-/");
}

TEST_F(LotusTest, WhatIsNoSheetIsNamed) {
  const std::string sound = Shop().Bytes();
  struct {
    std::string bytes;
    const char* fault;
  } const cases[] = {
      {"", "the file is empty"},
      {"id;name\r\n",
       "it is no Lotus 1-2-3 sheet. Open it in a spreadsheet program and save it as a 1-2-3 sheet (.wk4 or .wk3)"},
      {"PK\x03\x04", "it is no Lotus 1-2-3 sheet"},
      {sound.substr(0, 20), "it is no Lotus 1-2-3 sheet"},
  };
  for (const auto& each : cases) {
    PutFile(path_, each.bytes);
    EXPECT_THAT(MessageOf([&] { Open(); }), StartsWith("Cannot read " + path_ + ": " + each.fault));
  }
  EXPECT_EQ(MessageOf([&] { OpenLotusFile(folder_ / "none.wk4"); }),
            "Cannot open " + (folder_ / "none.wk4") + ": No such file or directory");
}

TEST_F(LotusTest, InAProcessOfItsOwn) {
  PutFile(path_, Shop().Bytes());
  const auto reader = OpenLotusFile(path_);
  EXPECT_EQ(TablesOf(*reader), "Orders:, My Sheet:");
  EXPECT_EQ(RowsOf(*reader, "My Sheet:"), "7/");
  EXPECT_THAT(MessageOf([&] { reader->Rows("Empty:", 1); }),
              HasSubstr("There is no sheet \"Empty:\" with cells in " + path_));
}

TEST_F(LotusTest, TheEngine) {
  PutFile(path_, Shop().Bytes());
  TDBConnLotus conn(path_);
  conn.Connect();
  EXPECT_EQ(
      ColumnsOf(conn, "Orders:"),
      "id <DOUBLE> 15,0, caf\xC3\xA9 <NVARCHAR> 255, day <DATE>, at <DATE>, mixed <NVARCHAR> 255, sum <DOUBLE> 15,0");
  EXPECT_EQ(Shown(*conn.OpenTable("My Sheet:")), "7/");
}

}  // namespace
}  // namespace velmora
