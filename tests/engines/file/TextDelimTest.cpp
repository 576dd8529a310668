// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/file/DBConnTextDelim.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "engines/file/TextRig.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

using testing::ColumnsOf;
using ::testing::ElementsAre;
using testing::MessageOf;
using testing::RowsOf;

constexpr char kDelimited[] = "t.csv";

class TextDelimTest : public ::testing::Test {
 protected:
  // The folder with one table of this text, connected.
  TDBConnTextDelim& Open(const std::string& text, bool hdr, const std::string& separator = ",") {
    WriteFileText(folder_ / kDelimited, text);
    conn_ = std::make_unique<TDBConnTextDelim>(folder_.Path(), separator, hdr);
    conn_->Connect();
    return *conn_;
  }
  // Structure and rows by a "; ", or the message of the error.
  std::string Read(const std::string& text, bool hdr, const std::string& separator = ",") {
    Open(text, hdr, separator);
    std::string result;
    const std::string message =
        MessageOf([&] { result = ColumnsOf(*conn_, kDelimited) + "; " + RowsOf(*conn_, kDelimited); });
    return result.empty() ? message : result;
  }

  testing::TScratchFolder folder_;
  std::unique_ptr<TDBConnTextDelim> conn_;
};

TEST_F(TextDelimTest, TypesComeFromTheLastValueOfTheSample) {
  const std::string a = "Column0 ";
  const struct {
    std::string text, result;
  } kCases[] = {
      {"\"x\"", a + "<VARCHAR> 255; x/"},
      {"\"\xC4\x8D\"", a + "<VARCHAR> 255; \xC4\x8D/"},
      {"1", a + "<DOUBLE>; 1/"},  // whole numbers too
      {"-1.5e3\n+.5\n5.", a + "<DOUBLE>; -1500/0.5/5/"},
      {"$1F\n$7fffffff\n12", "t.csv: line 1: column Column0: '$1F' is not a valid floating point value"},
      {"12\n+7\n$1F", a + "<I4>; 12/7/31/"},
      {"2001-02-03", a + "<DATE>; 2001-02-03/"},
      {"2001-02-03 04:05:06\n1899-12-30", a + "<DATE>; 2001-02-03 04:05:06/1899-12-30/"},
      {"00:00", a + "<DATE>; 1899-12-30/"},  // midnight of day zero is a date like others
      {"12:30:00\n23:59", a + "<DATE>; 1899-12-30 12:30:00/1899-12-30 23:59:00/"},
      // Not the widest type, and not the first.
      {"\"x\"\n12", "t.csv: line 1: column Column0: '\"x\"' is not a valid floating point value"},
      {"12\n\"x\"\n", a + "<VARCHAR> 255; /x/"},
      {"2001-02-03\n7", "t.csv: line 1: column Column0: '2001-02-03' is not a valid floating point value"},
      // Empty values have no say, and are null but in a text.
      {"1,\n,\n2,", a + "<DOUBLE>, Column1 <VARCHAR> 255; 1|/-|/2|/"},
      {"2001-02-03\n\n", a + "<DATE>; 2001-02-03/-/"},
      {"$1\n\n", a + "<I4>; 1/-/"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Read(c.text, false), c.result) << c.text;
}

TEST_F(TextDelimTest, OtherValuesOfTheSampleFailTheTable) {
  for (const std::string value : {"plain",
                                  "\"\"",
                                  "\"",
                                  "'x'",
                                  " 1",
                                  "1 ",
                                  " $1",
                                  "$",
                                  "$80000000",
                                  "0x1F",
                                  "1,5e",
                                  "inf",
                                  "nan",
                                  "-",
                                  ".",
                                  "1e999",
                                  "2001-02-30",
                                  "2001-2-3",
                                  "24:00",
                                  "9:30",
                                  "2001-02-03T04:05",
                                  "2001-02-03  04:05",
                                  "2001-02-03 ",
                                  "\"x",
                                  "True"})
    EXPECT_EQ(Read("7;" + value, false, ";"), Format("Invalid value for t.csv/%s: %s", value, value));
}

TEST_F(TextDelimTest, TheSampleEndsWithLineFifty) {
  const std::string head = "n\n";
  std::string lines;
  for (int i = 1; i < 49; ++i) lines += "1\n";
  EXPECT_THAT(Read(head + lines + "\"x\"\n1\n", true), ::testing::StartsWith("n <VARCHAR> 255; ")) << "the 50th line";
  EXPECT_EQ(Read(head + lines + "1\n\"x\"\n", true),
            "t.csv: line 51: column n: '\"x\"' is not a valid floating point value");
  EXPECT_EQ(Read("d\n" + StrReplace(lines, "1", "2001-02-03") + "\n2001-02-29", true),
            "t.csv: line 51: column d: '2001-02-29' is not a valid date and time");
}

TEST_F(TextDelimTest, LinesAndNames) {
  const struct {
    std::string text;
    bool hdr;
    std::string result;
  } kCases[] = {
      {"\"id\",na\"me\r\n1,\"x\"\r\n", true, "id <DOUBLE>, name <VARCHAR> 255; 1|x/"},
      {"id,name", true, "id <VARCHAR> 255, name <VARCHAR> 255; "},
      {"a,b\r,\n\"x\",", true, "a <VARCHAR> 255, b <VARCHAR> 255; |/x|/"},
      {"a,b\n,\n,", true, "a <VARCHAR> 255, b <VARCHAR> 255; |/|/"},
      {"\xEF\xBB\xBF"
       "1,2",
       false, "Column0 <DOUBLE>, Column1 <DOUBLE>; 1|2/"},
      {"", true, "List index out of bounds (0)"},
      {"", false, "List index out of bounds (0)"},
      // A line with fewer values leaves the others null, an empty line all.
      {"a,b\n1,2\n3\n\n4,\n", true, "a <DOUBLE>, b <DOUBLE>; 1|2/3|-/-|-/4|-/"},
      {"a,b\n1,2,3\n", true, "t.csv: line 2: value 3 has no column"},
      {"a,b\n1,2,x\n", true, "Invalid value for t.csv/x: x"},
      // Without names the last line of the sample says how many columns there are.
      {"1,2\n3", false, "t.csv: line 1: value 2 has no column"},
      {"1\n2,3", false, "Column0 <DOUBLE>, Column1 <DOUBLE>; 1|-/2|3/"},
      {"1\n2,", false, "Unhandled column type t.csv/Column1"},
      {"1\n2,,3", false, "Unhandled column type t.csv/Column1"},
      {"a,a\n1,2", true, "Duplicate column name: a"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Read(c.text, c.hdr), c.result) << c.text;
}

TEST_F(TextDelimTest, TextColumnsLoseTheirEnds) {
  const std::string sample = "s\n" + StrReplace(RepeatChar('.', 49), ".", "\"x\"\n");
  Open(sample +
           "plain\n\"\"\n\n\"\nab\n\xC4\x8D"
           "e\xE2\x82\xAC\n\"a\"b\"\n\"" +
           RepeatChar('y', 300) + "\"",
       true);
  EXPECT_EQ(ColumnsOf(*conn_, kDelimited), "s <VARCHAR> 255");
  EXPECT_EQ(RowsOf(*conn_, kDelimited).substr(98), "lai/////e/a\"b/" + RepeatChar('y', 300) + "/")
      << "kept whole beyond 255";
}

TEST_F(TextDelimTest, SeparatorsAndQuotes) {
  const struct {
    std::string text, separator, result;
  } kCases[] = {
      {"1\t\t\"x\"", "\t", "Column0 <DOUBLE>, Column1 <VARCHAR> 255, Column2 <VARCHAR> 255; 1||x/"},
      {"1,2", "", "Invalid value for t.csv/1,2: 1,2"},  // never found
      {"\"1,2\"", "", "Column0 <VARCHAR> 255; 1,2/"},
      {"\xC2\xA6"
       "1\xC2\xA6"
       "2",
       "\xC2\xA6", "Column0 <VARCHAR> 255, Column1 <DOUBLE>, Column2 <DOUBLE>; |1|2/"},
      {"||1||2", "||", "Invalid value for t.csv/||1: ||1"},
      // Double quotes alone protect no separator: the halves are values.
      {"\"a,b\"", ",", "Invalid value for t.csv/\"a: \"a"},
      // With both kinds ahead, a piece that ends within quotes is lost and the others move up.
      {"\"a,b\",7,\"it's\"", ",", "Column0 <VARCHAR> 255; it's/"},
      {"'a',1,\"x\"", ",", "Invalid value for t.csv/'a': 'a'"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Read(c.text, false, c.separator), c.result) << c.text;
}

TEST_F(TextDelimTest, LinesThatAreNoUtf8AreWindows1252) {
  EXPECT_EQ(Read("n\xE4me,\x80\n\"\x8Akoda \x93q\x94 \x81\xFF\",1\n\"\xC5\xA0koda\",2", true),
            "n\xC3\xA4me <VARCHAR> 255, \xE2\x82\xAC <DOUBLE>; "
            "\xC5\xA0koda \xE2\x80\x9Cq\xE2\x80\x9D \xC2\x81\xC3\xBF|1/\xC5\xA0koda|2/");
}

TEST_F(TextDelimTest, ListsTheFilesMaskByMask) {
  for (const char* name : {"b.csv", "a.TSV", "Z.txt", "c.txt", "x.tsv", "y.dat", "~c.txt", "a.csv"})
    WriteFileText(folder_ / name, "1");
  TDBConnTextDelim conn(folder_.Path(), ",", false);
  std::vector<std::pair<double, double>> progress;
  conn.on_progress = [&](TDBConn&, double total, double position) { progress.emplace_back(total, position); };
  conn.Connect();
  TStringList names;
  conn.meta().TableNames(names);
  EXPECT_THAT(names, ElementsAre("c.txt", "Z.txt", "a.csv", "b.csv", "a.TSV", "x.tsv"));
  EXPECT_EQ(progress.size(), 6U);
  TDBConnTextDelim none(folder_ / "none", ",", false);
  none.Connect();
  EXPECT_TRUE(none.meta().tTables.Empty());
  EXPECT_TRUE(conn.GetConnected());
  EXPECT_FALSE(none.GetConnected());
  EXPECT_EQ(MessageOf([&] { none.OpenTable("a.txt"); }),
            "Cannot read " + folder_ / "none/a.txt" + ": No such file or directory");
}

TEST_F(TextDelimTest, AFifoIsNotWaitedFor) {
  ASSERT_EQ(mkfifo((folder_ / kDelimited).c_str(), 0600), 0);
  TDBConnTextDelim conn(folder_.Path(), ",", false);
  conn.Connect();
  EXPECT_TRUE(conn.TableExists(kDelimited)) << "nothing is looked at for the list";
  EXPECT_EQ(MessageOf([&] { conn.OpenTable(kDelimited); }),
            "Cannot read " + folder_ / kDelimited + ": it is no regular file");
}

TEST_F(TextDelimTest, CountsLines) {
  const struct {
    std::string text;
    bool hdr;
    int count;
  } kCases[] = {{"", true, 0}, {"", false, 0}, {"a", true, 0}, {"a\nb\n\n", true, 2}, {"a\rb\r\nc", false, 3}};
  for (const auto& c : kCases) EXPECT_EQ(Open(c.text, c.hdr).GetRecordCount(kDelimited), c.count) << c.text;
}

TEST_F(TextDelimTest, ConnectingAgainListsAnewAndDisconnectingKeepsTheStore) {
  Open("1", false);
  ColumnsOf(*conn_, kDelimited);
  conn_->Disconnect();
  EXPECT_TRUE(conn_->meta().tTables.Current().fetched);
  WriteFileText(folder_ / kDelimited, "\"x\",1");
  EXPECT_EQ(ColumnsOf(*conn_, kDelimited), "Column0 <DOUBLE>");
  WriteFileText(folder_ / "u.txt", "1");
  conn_->Connect();
  EXPECT_EQ(conn_->meta().tTables.Rows().size(), 2U);
  EXPECT_EQ(ColumnsOf(*conn_, kDelimited), "Column0 <VARCHAR> 255, Column1 <DOUBLE>");
}

TEST_F(TextDelimTest, AFailedFetchKeepsTheFormerStructure) {
  Open("1", false);
  ColumnsOf(*conn_, kDelimited);
  WriteFileText(folder_ / kDelimited, "oops");
  EXPECT_EQ(MessageOf([&] { conn_->FetchTableStructure(kDelimited); }), "Invalid value for t.csv/oops: oops");
  EXPECT_EQ(ColumnsOf(*conn_, kDelimited), "Column0 <DOUBLE>");
}

TEST_F(TextDelimTest, AConnectedEngineGivesACloneWithItsStore) {
  Open("1;2", false, ";");
  ColumnsOf(*conn_, kDelimited);
  WriteFileText(folder_ / "later.txt", "1");
  const std::unique_ptr<TDBConn> clone = conn_->Clone();
  const auto& same = dynamic_cast<TDBConnTextDelim&>(*clone);
  EXPECT_EQ(same.folder() + same.separator() + (same.hdr() ? "Y" : "N"), folder_.Path() + ";N");
  conn_.reset();
  EXPECT_EQ(clone->meta().tTables.Rows().size(), 1U) << "nothing is listed anew";
  EXPECT_TRUE(clone->meta().tTables.Current().fetched);
  EXPECT_EQ(RowsOf(*clone, kDelimited), "1|2/");
}

TEST_F(TextDelimTest, ACreatedTableIsALineOfData) {
  Open("1", false);
  conn_->CreateTable("new", {"a int", "b int"});
  EXPECT_EQ(ReadFileBytes(folder_ / "new.txt"), "# new\r\n");
  EXPECT_FALSE(conn_->TableExists("new.txt")) << "until it is listed again";
  EXPECT_EQ(MessageOf([&] { conn_->OpenTable("new.txt"); }), "Invalid value for new.txt/# new: # new");
}

TEST_F(TextDelimTest, WritesTypesAsWords) {
  Open("a,b,c,d\n\"x\",1,2001-02-03,$1", true);
  ColumnsOf(*conn_, kDelimited);
  std::string text, words;
  for (const char* column : {"a", "b", "c", "d"}) {
    conn_->ColumnText(kDelimited, column, text);
    words += text + ";";
  }
  EXPECT_EQ(words, "varchar(255);float;date;int;");
  conn_->GetDisplayName(text);
  EXPECT_EQ(text, folder_.Path());
  EXPECT_EQ(conn_->GetEngine(), kEngineText);
}

}  // namespace
}  // namespace velmora
