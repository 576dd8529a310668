// SPDX-License-Identifier: GPL-3.0-or-later

// Folders of dBASE and FoxPro beyond the cases of tests/data/formats: which files are tables, limits, many records.

#include <sys/stat.h>

#include <filesystem>

#include "formats/dbf/DBaseFolder.h"
#include "formats/dbf/FoxProFolder.h"
#include "support/FormatCase.h"
#include "support/MessageOf.h"
#include "support/ReaderText.h"
#include "support/ScratchFolder.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

class DbfFolderTest : public ::testing::Test {
 protected:
  void Put(const std::string& name, const std::string& change = "") {
    PutFile(folder_ / name, BytesOver(letters_.Bytes("t.dbf"), change));
  }
  std::unique_ptr<TFileReader> DBase() const { return OpenDBaseFolder(folder_.Path()); }
  std::unique_ptr<TFileReader> FoxPro() const { return OpenFoxProFolder(folder_.Path()); }
  std::string Failure(const std::function<void()>& body) const {
    return StrReplace(MessageOf(body), folder_.Path() + "/", "");
  }

  TScratchFolder folder_;
  const TFormatCase letters_ = FormatCase("dbf-heads");
};

TEST_F(DbfFolderTest, TablesAreTheFilesOfTheFolder) {
  for (const char* name : {"b.dbf", "A.DBF", "a b.Dbf", "c.dbf.bak", "c.db", "c.DBF", "c.dbf"}) Put(name);
  std::filesystem::create_directory(folder_ / "folder.dbf");
  mkfifo((folder_ / "pipe.dbf").c_str(), 0600);
  for (const auto& reader : {DBase(), FoxPro()}) {
    std::string names;
    for (const TOLEDBTableRow& table : reader->Tables()) names += table.TABLE_NAME + " " + table.TABLE_TYPE + ";";
    EXPECT_EQ(names, "A TABLE;a b TABLE;b TABLE;c TABLE;pipe TABLE;");
    EXPECT_EQ(RowsText(reader->Rows("A B", kAllRows)), "row text x\nrow text y\n") << "letter case plays no part";
    for (const auto& [table, failure] : {std::pair{"none", "Cannot open none.dbf: No such file or directory"},
                                         {"pipe", "Cannot open pipe.dbf: it is no regular file"},
                                         {"folder", "Cannot open folder.dbf: it is no regular file"}}) {
      EXPECT_EQ(Failure([&, &table = table] { reader->Structure(table); }), failure);
      EXPECT_EQ(Failure([&, &table = table] { reader->Rows(table, kAllRows); }), failure);
    }
  }
  EXPECT_EQ(Failure([&] { OpenDBaseFolder(folder_ / "none"); }), "Cannot open none: No such file or directory");
  EXPECT_EQ(Failure([&] { OpenDBaseFolder(folder_ / "b.dbf"); }), "Cannot open b.dbf: Not a directory");
  EXPECT_EQ(Failure([&] { OpenFoxProFolder(folder_ / "none.dbc"); }),
            "Cannot open none.dbc: No such file or directory");
  EXPECT_EQ(Failure([&] { OpenFoxProFolder(folder_ / "pipe.dbf"); }), "Cannot open pipe.dbf: it is no regular file");
}

TEST_F(DbfFolderTest, LimitsCountTheRowsThatAreShown) {
  Put("t.dbf", "@4 le4:5 @65 \" a*b c*d e\" @10 le2:2 @48 01");
  EXPECT_EQ(RowsText(DBase()->Rows("t", 2)), "row text a\nrow text b\n");
  EXPECT_EQ(RowsText(FoxPro()->Rows("t", kAllRows)), "row 1: text a\nrow 3: text c\nrow 5: text e\n");
  EXPECT_EQ(RowsText(FoxPro()->Rows("t", 2)), "row 1: text a\nrow 3: text c\n");
  EXPECT_EQ(RowsText(FoxPro()->Rows("t", 1)), "row text a\n") << "it has the number that it would have anyway";
  EXPECT_EQ(RowsText(FoxPro()->Rows("t", 0)), "");
}

TEST_F(DbfFolderTest, TablesOfADatabase) {
  FormatCase("foxpro-visual").PutInto(folder_.Path());
  const auto database = OpenFoxProFolder(folder_ / "shop.dbc");
  EXPECT_EQ(KeysText(database->Structure("ITEMS of shop")),
            "key BY(bytes)\nkey ORDERNO(order_number) primary unique\n");
  EXPECT_EQ(Failure([&] { database->Structure("free"); }), "shop.dbc: there is no table \"free\"");
}

TEST_F(DbfFolderTest, CodePages) {
  const struct {
    const char *head, *beside, *stated, *rows;
  } kCases[] = {
      {"00", "1251", "", "row text Д"},
      {"C8", " ansi 1251\r\n", "", "row text Д"},
      {"00", "ISO-8859-7", "", "row text Δ"},
      {"00", "88597", "", "row text Δ"},
      {"C8", "windows-1251", "1253", "row text Δ"},
      {"C8", "none", "", "row text Ä"},
      {"00", "1252//TRANSLIT", "", "row text ─"},
      {"00", "", "UTF8", "row text \uFFFD"},
  };
  for (const auto& c : kCases) {
    Put("t.dbf", Format("@29 %s @66 C4 20", c.head));
    PutFile(folder_ / "T.CPG", c.beside);
    const auto reader = OpenDBaseFolder(folder_.Path(), c.stated);
    EXPECT_EQ(RowsText(reader->Rows("t", 1)), std::string(c.rows) + "\n") << c.head << " " << c.beside;
  }
  EXPECT_THAT(DBase()->Structure("t").warnings, ::testing::ElementsAre(folder_ / "T.CPG: there is no code page "));
  EXPECT_EQ(Failure([&] { OpenFoxProFolder(folder_.Path(), "cp9999"); }),
            "There is no code page cp9999: give a number, such as 1251, or UTF-8");
}

// What is missing beside a table does not keep it from being read.
TEST_F(DbfFolderTest, MissingCompanions) {
  FormatCase("foxpro-visual").PutInto(folder_.Path());
  std::filesystem::remove(folder_ / "items.cdx");
  std::filesystem::remove(folder_ / "shop.dbc");
  const TFileTable table = FoxPro()->Structure("items");
  EXPECT_FALSE(table.columns.empty());
  EXPECT_TRUE(table.indexes.empty());
  EXPECT_EQ(StrReplace(JoinList(table.warnings, "\n"), folder_.Path() + "/", ""),
            "shop.dbc is not there: long names, defaults and keys of the table in items.dbf are not known\n"
            "items.cdx is not there: indexes of the table in items.dbf are not known");
  Put("t.dbf", "@28 01");
  PutFile(folder_ / "t.mdx", "");
  EXPECT_TRUE(FoxPro()->Structure("t").warnings.empty()) << "the indexes are those of dBASE";
}

// More than a block of them.
TEST_F(DbfFolderTest, ManyRecords) {
  constexpr int kCount = 12345, kSize = 40;
  std::string records, expected;
  for (int i = 0; i < kCount; ++i) {
    std::string record = Format(" row %d", i);
    expected += "row text row " + std::to_string(i) + "\n";
    record.resize(kSize + 1, ' ');
    records += record;
  }
  const std::string head =
      BytesOver(letters_.Bytes("t.dbf"), Format("@4 le4:%d @10 le2:%d @48 28 cut:65", kCount, kSize + 1));
  PutFile(folder_ / "t.dbf", head.substr(0, 65) + records);
  EXPECT_TRUE(RowsText(DBase()->Rows("t", kAllRows)) == expected);
}

}  // namespace
}  // namespace velmora::testing
