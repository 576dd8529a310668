// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/SheetTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "formats/sheet/SheetReader.h"
#include "formats/sheet/SheetText.h"
#include "support/MessageOf.h"

namespace velmora {
namespace {

using testing::CellsOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::MessageOf;
using testing::RowsOf;
using testing::Shown;
using testing::TablesOf;

struct TCase {
  const char* about;
  const char* grid;
  TSheetRule rule;
  const char* structure;
  const char* rows;
};

constexpr TSheetRule kNamed = {.names = true, .mixed_as_text = true};
constexpr TSheetRule kUnnamed = {.names = false, .mixed_as_text = true};
constexpr TSheetRule kMajority = {.names = true, .mixed_as_text = false};

TEST(SheetTableTest, CellsBecomeColumnsAndRows) {
  const TCase cases[] = {
      {"the three kinds", "id|name|day/1|Ann|@2001-02-03/2.5||@2001-02-03 04:05:06", kNamed,
       "id 5, name 130(255), day 7", "1|Ann|2001-02-03/2.5|-|2001-02-03 04:05:06/"},
      {"without names", "1|a/2|b", kUnnamed, "F1 5, F2 130(255)", "1|a/2|b/"},
      {"starts at the first cell and ends at the last", "///||a||c/||1/////|||2/", kNamed, "a 5, F2 5, c 130(255)",
       "1|-|-/-|-|-/-|-|-/-|-|-/-|-|-/-|2|-/"},
      {"names alone", "a|b", kNamed, "a 130(255), b 130(255)", ""},
      {"a column without name or value", "a||c/1||3", kNamed, "a 5, F2 130(255), c 5", "1|-|3/"},
      {"numbers and dates as names", "2001|@2001-02-03|1.5/1|2|3", kNamed, "2001 5, 2001-02-03 5, 1#5 5", "1|2|3/"},
      {"mixed as text", "a|b|c/1|@2001-02-03|@2001-02-03 04:05:06/x|y|3", kNamed, "a 130(255), b 130(255), c 130(255)",
       "1|2001-02-03|2001-02-03 04:05:06/x|y|3/"},
      {"a time alone, and numbers of many digits, as text", "a|b|c/@1899-12-30 13:45:00|0.1|12345678901/x|x|x", kNamed,
       "a 130(255), b 130(255), c 130(255)", "13:45:00|0.1|12345678901/x|x|x/"},
      {"the majority", "a|b/1|x/2|3/y|z", kMajority, "a 5, b 130(255)", "1|x/2|-/-|z/"},
      {"of equal parts number, then date", "a|b|c/1|x|x/@2001-02-03|@2001-02-03|2", kMajority, "a 5, b 7, c 5",
       "1|-|-/-|2001-02-03|2/"},
      {"eight rows decide", "a|b/1|x/2|x/3|x/4|x/5|x/6|x/7|x/8|x/nine|9", kNamed, "a 5, b 130(255)",
       "1|x/2|x/3|x/4|x/5|x/6|x/7|x/8|x/-|9/"},
      {"empty rows are among the eight", "a/////////5/9", kNamed, "a 130(255)", "-/-/-/-/-/-/-/-/5/9/"},
  };
  for (const TCase& each : cases) {
    const TSheetTable table(CellsOf(each.grid), each.rule);
    EXPECT_EQ(Shown(table.Structure("t")), each.structure) << each.about;
    EXPECT_EQ(Shown(table.Rows(kAllRows)), each.rows) << each.about;
  }
}

TEST(SheetTableTest, TextsOfMoreThan255LettersMakeALongColumn) {
  const auto structure = [](std::initializer_list<std::size_t> sizes) {
    std::vector<TSheetCell> cells;
    for (const std::size_t size : sizes) {
      std::string text;
      for (std::size_t i = 0; i < size; ++i) text += "\xC3\xA9";
      cells.push_back({static_cast<std::uint32_t>(cells.size()), 0, text});
    }
    return Shown(TSheetTable(cells, kUnnamed).Structure("t"));
  };
  EXPECT_EQ(structure({255, 255, 1}), "F1 130(255)");
  EXPECT_EQ(structure({256, 1}), "F1 130(255)") << "half of them is not most";
  EXPECT_EQ(structure({256, 256, 1}), "F1 130 long");
  EXPECT_EQ(structure({1, 1, 1, 1, 1, 1, 1, 1, 256, 256, 256}), "F1 130(255)");
}

TEST(SheetTableTest, WhatTheSchemaAndTheFieldsSay) {
  const TFileTable table = TSheetTable(CellsOf("a|b|c/1|@2001-02-03|x"), kNamed).Structure("Sheet1$");
  EXPECT_EQ(table.columns[0].TABLE_NAME, "Sheet1$");
  EXPECT_EQ(table.columns[2].ORDINAL_POSITION, 3U);
  EXPECT_EQ(table.columns[0].NUMERIC_PRECISION, 15);
  EXPECT_EQ(table.columns[0].COLUMN_FLAGS, kColumnIsFixedLength);
  EXPECT_EQ(table.columns[2].COLUMN_FLAGS, 0U) << "of variable length";
  EXPECT_TRUE(table.columns[0].IS_NULLABLE);
  EXPECT_FALSE(table.columns[0].COLUMN_DEFAULT);
  EXPECT_EQ(table.fields[0].kind, EFieldKind::Float);
  EXPECT_EQ(table.fields[1].kind, EFieldKind::DateTime);
  EXPECT_EQ(table.fields[2].kind, EFieldKind::WideString);
  EXPECT_EQ(table.is_autoincrement, std::vector<bool>(3));
  EXPECT_TRUE(table.indexes.empty());
}

TEST(SheetTableTest, CellsComeInAnyOrder) {
  std::vector<TSheetCell> cells = CellsOf("a|b/1|2/3|4");
  std::ranges::reverse(cells);
  cells.push_back({2, 1, 5.0});
  const TSheetTable table(cells, kNamed);
  EXPECT_EQ(Shown(table.Rows(kAllRows)), "1|2/3|5/");
  EXPECT_EQ(Shown(table.Rows(1)), "1|2/");
  EXPECT_EQ(Shown(table.Rows(0)), "");
}

TEST(SheetTableTest, AFewCellsFarApartTakeNoMemoryForAllBetween) {
  const TSheetTable far({{0, 0, 1.0}, {0, 255, 2.0}, {65535, 255, 3.0}}, kUnnamed);
  EXPECT_EQ(far.Structure("t").columns.size(), 256U);
  EXPECT_EQ(far.Rows(10).size(), 10U);
  EXPECT_THAT(MessageOf([&] { far.Rows(kAllRows); }),
              HasSubstr("65536 rows of 256 columns hold no more than 3 cells: delete the stray cells"));
  const TSheetTable tall({{0, 0, 1.0}, {65535, 9, 3.0}}, kUnnamed);
  EXPECT_EQ(tall.Rows(kAllRows).size(), 65536U) << "a narrow sheet may be as empty as it likes";
}

TEST(SheetTableTest, Words) {
  EXPECT_EQ(SheetWord("a.b!c[d]"), "a#b_c(d)");
  EXPECT_EQ(SheetWord("  two\nlines\t "), "two_lines");
  EXPECT_EQ(SheetWord(" \n "), "");
  EXPECT_EQ(SheetWord(std::string(70, 'x')), std::string(64, 'x'));
  EXPECT_EQ(SheetWord("Gr\xC3\xB6\xC3\x9F"
                      "e"),
            "Gr\xC3\xB6\xC3\x9F"
            "e");
}

TEST(SheetTableTest, RepeatedNames) {
  const auto distinct = [](std::vector<std::string> names) {
    MakeDistinct(names);
    return names;
  };
  EXPECT_THAT(distinct({"a", "A", "a", "b"}), ElementsAre("a", "A1", "a2", "b"));
  EXPECT_THAT(distinct({"a", "a", "a1", "A2"}), ElementsAre("a", "a3", "a1", "A2"))
      << "names that stand in the sheet stay";
  EXPECT_EQ(Shown(TSheetTable(CellsOf("F2||F2/1|2|3"), kNamed).Structure("t")), "F2 5, F21 5, F22 5");
}

TEST(SheetReaderTest, NamesOfTables) {
  const auto reader = [](TSheetNaming naming) {
    std::vector<TSheet> sheets = {{"None"}};
    for (const char* name : {"Orders", "My Sheet", "Bob's", "2004", "a.b",
                             "Gr\xC3\xB6\xC3\x9F"
                             "e",
                             "orders", "A_1$"})
      sheets.push_back({name, CellsOf(std::string("a/") + name)});
    return TSheetReader("f.xls", std::move(sheets), naming, kNamed);
  };
  TSheetReader excel = reader({.suffix = "$", .quotes = true});
  EXPECT_EQ(TablesOf(excel),
            "Orders$, 'My Sheet$', 'Bob''s$', '2004$', 'a#b$', Gr\xC3\xB6\xC3\x9F"
            "e$, orders1$, 'A_1$$'");
  EXPECT_EQ(excel.Structure("orders$").columns[0].TABLE_NAME, "Orders$");
  for (const auto& [name, sheet] :
       std::initializer_list<std::pair<const char*, const char*>>{{"'My Sheet$'", "My Sheet"},
                                                                  {"my sheet$", "My Sheet"},
                                                                  {"My Sheet", "My Sheet"},
                                                                  {"Bob's$", "Bob's"},
                                                                  {"a.b", "a.b"},
                                                                  {"A_1$", "A_1$"}})
    EXPECT_EQ(RowsOf(excel, name), std::string(sheet) + "/") << name;
  EXPECT_EQ(MessageOf([&] { excel.Rows("None", kAllRows); }), "There is no sheet \"None\" with cells in f.xls");
  TSheetReader lotus = reader({.suffix = ":"});
  EXPECT_EQ(TablesOf(lotus),
            "Orders:, My Sheet:, Bob's:, 2004:, a#b:, Gr\xC3\xB6\xC3\x9F"
            "e:, orders1:, A_1$:");
}

}  // namespace
}  // namespace velmora
