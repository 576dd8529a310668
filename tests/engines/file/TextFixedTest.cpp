// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/file/DBConnTextFixed.h"

#include <gmock/gmock.h>

#include "engines/file/TextRig.h"
#include "formats/text/SMImportFromText.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::ColumnsOf;
using ::testing::ElementsAre;
using testing::MessageOf;
using testing::RowsOf;

constexpr char kFixed[] = "t.txt";

class TextFixedTest : public ::testing::Test {
 protected:
  std::string Read(const std::string& text, bool hdr) {
    WriteFileText(folder_ / kFixed, text);
    TDBConnTextFixed conn(folder_.Path(), hdr);
    conn.Connect();
    return ColumnsOf(conn, kFixed) + "; " + RowsOf(conn, kFixed);
  }

  testing::TScratchFolder folder_;
};

TEST_F(TextFixedTest, ColumnsStandBetweenBlankPositions) {
  const struct {
    std::string text, result;
  } kNamed[] = {
      {"id name    price\n"
       " 1 Ann      1.50\r\n"
       "12 Bob         2\n\n\n",
       "id <I4>, name <VARCHAR> 4, price <DOUBLE>; 1|Ann|1.5/12|Bob|2/"},
      // A span without a name or without data joins its left neighbour over one blank, not over two.
      {"First Name at\n"
       "Joe        2001-02-03 04:05\n",
       "First Name <VARCHAR> 10, at <DATETIME>; Joe|2001-02-03 04:05:00/"},
      {"a  b c\n"
       "1      x\n",
       "a <I4>, b c <VARCHAR> 5; 1|x/"},
      {"  Unit Price\n"
       "        1.50\n",
       "Unit <VARCHAR> 4, Price <DOUBLE>; -|1.5/"},
      {"a b\n"
       "1 2 3 4\n"
       "5 6 7 8\n",
       "a <I4>, b <VARCHAR> 5; 1|2 3 4/5|6 7 8/"},
      // A value that fills the column to the next one; short lines, blank lines.
      {"k v\n"
       "a 1\n"
       "\n"
       "b\n"
       "   \n",
       "k <VARCHAR> 1, v <I4>; a|1/-|-/b|-/-|-/"},
      // Only a line of names: the words that one blank parts are one.
      {"id name  x\n", "id name <VARCHAR> 7, x <VARCHAR> 1; "},
      {"a  a  Column1   \n1  2  3        4\n", "a <I4>, Column1 <I4>, Column2 <I4>, Column3 <I4>; 1|2|3|4/"},
      // Positions are characters.
      {"\xC4\x8D\xC4\x8D x\n\xE2\x82\xAC  1\n", "\xC4\x8D\xC4\x8D <VARCHAR> 2, x <I4>; \xE2\x82\xAC|1/"},
      {"n\xE4 x\n\x80  1\n\xE2\x82\xAC  2", "n\xC3\xA4 <VARCHAR> 2, x <I4>; \xE2\x82\xAC|1/\xE2\x82\xAC|2/"},
      {"", "; "},
      {"\n\n", "; "},
  };
  for (const auto& c : kNamed) EXPECT_EQ(Read(c.text, true), c.result) << c.text;
  EXPECT_EQ(Read("Joe Fox 17\nAnn Lee  5\n", false),
            "Column0 <VARCHAR> 3, Column1 <VARCHAR> 3, Column2 <I4>; Joe|Fox|17/Ann|Lee|5/");
  EXPECT_EQ(Read("  x17\n  y 5\n", false), "Column0 <VARCHAR> 3; x17/y 5/") << "packed columns are one";
}

TEST_F(TextFixedTest, AllValuesDecideAboutTheType) {
  const struct {
    std::string lines, type;
  } kCases[] = {
      {"1\n-2\n+2147483647\n0\n", "<I4>"},
      {"1\n2147483648\n", "<DOUBLE>"},
      {"1\n2.5\n-1e3\n0.5\n", "<DOUBLE>"},
      {"1\n007\n", "<VARCHAR> 3"},
      {"1\n00.5\n", "<VARCHAR> 4"},
      {"123456789012345\n", "<DOUBLE>"},
      {"1234567890123456\n", "<VARCHAR> 16"},
      {"1\nx\n", "<VARCHAR> 1"},
      {"$1F\n", "<VARCHAR> 3"},
      {"inf\n", "<VARCHAR> 3"},
      {"2001-02-03\n1999-12-31\n", "<DATE>"},
      {"2001-02-03\n2001-02-30\n", "<VARCHAR> 10"},
      {"04:05\n23:59:59\n", "<TIME>"},
      {"2001-02-03\n04:05:06\n", "<VARCHAR> 10"},
      {"1\n2001-02-03\n", "<VARCHAR> 10"},
      {"\xC4\x8D\xC4\x8D\n", "<VARCHAR> 2"},
  };
  for (const auto& c : kCases) {
    const std::string result = Read(c.lines, false);
    EXPECT_EQ(result.substr(0, result.find(';')), "Column0 " + c.type) << c.lines;
  }
  EXPECT_EQ(Read("at\n2001-02-03 04:05\n2001-02-04\n", true), "at <DATETIME>; 2001-02-03 04:05:00/2001-02-04/");
  EXPECT_EQ(Read("d           t\n2001-02-03  04:05:06\n", true), "d <DATE>, t <TIME>; 2001-02-03|1899-12-30 04:05:06/");
}

TEST_F(TextFixedTest, TheImportGoesByItsRowAndKind) {
  WriteFileText(folder_ / kFixed, "Report of\nid nm\n 1 ab\n");
  const struct {
    bool fixed;
    int row_first;
    std::string names, rows;
  } kCases[] = {
      {true, 3, "id nm ", "1|ab/"},
      {true, 2, "Report of ", "id nm/1 ab/"},
      {true, 4, "1 ab ", ""},
      {true, 9, "", ""},
      {true, 0, "Column0 Column1 ", "Report|of/id nm|-/1 ab|-/"},
      {false, 1, "Column0 ", "Report of/id nm/1 ab/"},
      {false, 3, "id nm ", "1 ab/"},
  };
  for (const auto& c : kCases) {
    TMemDataset rows({});
    TSMImportFromText import;
    import.SourceFileName = folder_ / kFixed;
    import.DataSet = &rows;
    import.Fixed = c.fixed;
    import.RowFirst = c.row_first;
    std::string names;
    const auto create = [&](TSMImportBaseComponent&, const TSMColumns& columns) {
      std::vector<TFieldDef> fields;
      for (const TSMColumn& column : columns) {
        names += column.name + " ";
        fields.push_back({column.name});
      }
      rows = TMemDataset(fields);
      import.RebuildMappings();
    };
    import.OnCreateStructure = create;
    import.Execute();
    EXPECT_EQ(names + ": " + RowsOf(rows), c.names + ": " + c.rows) << c.fixed << c.row_first;
  }
}

TEST_F(TextFixedTest, ClonesCopyTheStoreAndNothingIsWrittenOrShown) {
  WriteFileText(folder_ / kFixed, "a\n1\n");
  TDBConnTextFixed conn(folder_.Path(), true);
  conn.Connect();
  ColumnsOf(conn, kFixed);
  WriteFileText(folder_ / "later.csv", "1");
  const std::unique_ptr<TDBConn> clone = conn.Clone();
  EXPECT_TRUE(dynamic_cast<TDBConnTextFixed&>(*clone).hdr());
  EXPECT_EQ(clone->meta().tTables.Rows().size(), 1U);
  EXPECT_TRUE(clone->meta().tTables.Current().fetched);
  EXPECT_EQ(RowsOf(*clone, kFixed), "1/");
  EXPECT_EQ(clone->GetEngine(), kEngineText);
  std::string name = "x";
  conn.GetDisplayName(name);
  EXPECT_EQ(name, "");
  conn.Connect();
  EXPECT_EQ(conn.meta().tTables.Rows().size(), 2U);
  EXPECT_FALSE(conn.meta().tTables.Current().fetched);
}

// --- The base over components of tests

// Gives one column of each type, or fills the dataset itself.
class TFakeImport : public TSMImportBaseComponent {
 public:
  explicit TFakeImport(TSMColumns columns, std::string fault = "")
      : columns_(std::move(columns)), fault_(std::move(fault)) {}

  void Execute() override {
    EXPECT_FALSE(Options & kSMFirstOption || AnimatedStatus || AbortOnProblem);
    Mappings = {7, 7};
    if (OnCreateStructure) OnCreateStructure(*this, columns_);
    EXPECT_EQ(Mappings.size(), columns_.size());
    if (!fault_.empty()) RaiseError(fault_ + SourceFileName);
  }

 private:
  TSMColumns columns_;
  std::string fault_;
};

class TFilledImport : public TSMImportBaseComponent {
 public:
  explicit TFilledImport(TMemDataset rows) : rows_(std::move(rows)) {}
  void Execute() override { *DataSet = rows_; }

 private:
  TMemDataset rows_;
};

class DBConnSMITest : public ::testing::Test {
 protected:
  DBConnSMITest() {
    WriteFileText(folder_ / "a.x", "");
    WriteFileText(folder_ / "b.y", "");
    WriteFileText(folder_ / "c.z", "");
    conn_.Connect();
  }
  void Fill(TMemDataset rows) {
    conn_.ComponentClass = [rows = std::move(rows)] { return std::make_unique<TFilledImport>(rows); };
  }

  testing::TScratchFolder folder_;
  TDBConnSMI conn_{folder_.Path(), "y;x"};
};

TEST_F(DBConnSMITest, ListsByExtensionAndMakesFieldsOfColumns) {
  TStringList names;
  conn_.meta().TableNames(names);
  EXPECT_THAT(names, ElementsAre("b.y", "a.x"));
  EXPECT_EQ(MessageOf([&] { conn_.OpenTable("a.x"); }), "Abstract Error");
  TSMColumns columns;
  for (int type = 0; type < 8; ++type) columns.push_back({"c" + std::to_string(type), type, type == 4 ? 9 : 0});
  columns.push_back({"s", 0, 12});
  conn_.ComponentClass = [&] { return std::make_unique<TFakeImport>(columns); };
  EXPECT_EQ(ColumnsOf(conn_, "a.x"),
            "c0 <VARCHAR> 255, c1 <I4>, c2 <DOUBLE>, c3 <DATETIME>, c4 <DATE>, c5 <TIME>, c6 <BOOL>, c7 <BYTES>, "
            "s <VARCHAR> 12");
  EXPECT_TRUE(conn_.OpenTables().empty());
  columns = {{"c", 8, 0}};
  EXPECT_EQ(MessageOf([&] { conn_.OpenTable("a.x"); }), "Unhandled data type");
}

TEST_F(DBConnSMITest, DescribesEveryKindOfField) {
  using enum EFieldKind;
  TMemDataset rows({{"s", String, 10}, {"si", SmallInt}, {"i", Integer},       {"w", Word},
                    {"o", Boolean},    {"f", Float},     {"cu", Currency, 19}, {"bc", Bcd, 8},
                    {"d", Date},       {"t", Time},      {"dt", DateTime},     {"by", Bytes, 4},
                    {"bl", Blob, 1},   {"g", Graphic},   {"vb", VarBytes, 6},  {"ai", AutoInc},
                    {"m", Memo},       {"fm", FmtMemo},  {"fc", FixedChar, 3}, {"ws", WideString, 5},
                    {"li", LargeInt},  {"ts", TimeStamp}});
  for (const char* blob : {"12", "12345", ""}) {
    TMemDataset::TRow row(22);
    row[12] = row[16] = std::string(blob);
    rows.AddRow(row);
  }
  Fill(rows);
  EXPECT_EQ(ColumnsOf(conn_, "a.x"),
            "s <VARCHAR> 10, si <I2>, i <I4>, w <UI2>, o <BOOL>, f <DOUBLE>, cu <DECIMAL> 19,2, bc <DECIMAL> 8,2, "
            "d <DATE>, t <TIME>, dt <DATETIME>, by <BYTES> 4, bl <BYTES> 5, g <BYTES>, vb <VARBYTES> 6, ai <I4> auto, "
            "m <TEXT> 5, fm <TEXT>, fc <CHAR> 3, ws <NVARCHAR> 5, li <I8>, ts <TIMESTAMP>");
  std::string text, texts;
  for (const char* column : {"s", "i", "f", "cu", "bl", "ai", "m", "ts"}) {
    conn_.ColumnText("a.x", column, text);
    texts += text + ";";
  }
  EXPECT_EQ(texts, "varchar(10);int;float;decimal(19,2);binary;int auto_increment;text(5);timestamp;");
  Fill(TMemDataset({{"u", Guid}}));
  EXPECT_EQ(MessageOf([&] { ColumnsOf(conn_, "b.y"); }),
            "TDBConnSMI.FetchTableStructure: Unsupported field type for field u");
}

TEST_F(DBConnSMITest, ColumnTextsHaveFlagsAndNoDefault) {
  TMetaColumn column;
  column.datatype = ntDouble;
  column.notnull = column.autoinc = true;
  column.default_ = "7";
  std::string text;
  conn_.ColumnDescription(column, true, text);
  EXPECT_EQ(text, "float not null auto_increment");
  column.size = 12;
  column.precision = 3;
  column.description = "number";
  conn_.ColumnDescription(column, true, text);
  EXPECT_EQ(text, "number(12,3) not null auto_increment");
  conn_.ColumnDescription(column, false, text);
  EXPECT_EQ(text, "float");
}

TEST_F(DBConnSMITest, EveryOpeningIsARecordUntilItIsClosed) {
  TMemDataset rows({{"a"}});
  rows.AddRow({std::string("x")});
  Fill(rows);
  EXPECT_EQ(conn_.GetRecordCount("a.x"), 1);
  EXPECT_TRUE(conn_.OpenTables().empty());
  auto first = conn_.OpenTable("a.x");
  Fill(TMemDataset({{"a"}}));
  auto second = conn_.OpenTable("a.x");
  EXPECT_EQ(conn_.OpenTables().size(), 2U);
  EXPECT_EQ(conn_.GetRecordCount("a.x"), 1) << "of the first one that is open";
  EXPECT_EQ(conn_.GetRecordCount("b.y"), 0);
  conn_.CloseTable(std::move(second));
  EXPECT_EQ(conn_.OpenTables().size(), 1U);
  conn_.CloseTable(std::make_unique<TMemDataset>(rows));
  conn_.CloseTable(nullptr);
  EXPECT_EQ(RowsOf(*first), "x/");
  first->First();
  conn_.Disconnect();
  EXPECT_TRUE(conn_.OpenTables().empty() && conn_.meta().tTables.Empty());
  EXPECT_TRUE(first->Eof()) << "its rows are gone";
  conn_.CloseTable(std::move(first));
}

TEST_F(DBConnSMITest, AFailedImportStaysOpenUntilDisconnect) {
  conn_.ComponentClass = [] { return std::make_unique<TFakeImport>(TSMColumns{{"a", 1, 0}}, "cannot import "); };
  EXPECT_EQ(MessageOf([&] { conn_.OpenTable("a.x"); }), "cannot import " + folder_ / "a.x");
  EXPECT_EQ(conn_.OpenTables().size(), 1U);
  conn_.Disconnect();
  EXPECT_TRUE(conn_.OpenTables().empty());
  TStringList list = {"old"};
  conn_.ListDatabases(list);
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(conn_.GetEngine(), kEngineNone);
  EXPECT_EQ(dynamic_cast<TDBConnSMI&>(*conn_.Clone()).extensions(), "y;x");
}

}  // namespace
}  // namespace velmora
