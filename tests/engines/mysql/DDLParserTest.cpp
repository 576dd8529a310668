// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/DDLParser.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "support/CaseFile.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/ParserHost.h"

namespace velmora::testing {
namespace {

// The text with CR LF for every blank and line feed outside quotes and backticks.
std::string WithCrLf(std::string_view text) {
  std::string result;
  char quote = '\0';
  for (char c : text) {
    if (quote == c)
      quote = '\0';
    else if (quote == '\0' && (c == '\'' || c == '"' || c == '`'))
      quote = c;
    if (quote == '\0' && (c == ' ' || c == '\n'))
      result += "\r\n";
    else
      result += c;
  }
  return result;
}

// What the parser says of a text and what the store holds then.
std::string Outcome(const std::string& before, const std::string& text) {
  TParserHost host;
  host.ParseDDL(before);
  const std::string message = MessageOf([&] { host.ParseDDL(text); });
  return (message == "nothing raised" ? "" : "! " + message + "\n") + DumpMeta(host.meta());
}

class DDLCases : public ::testing::TestWithParam<const char*> {};

TEST_P(DDLCases, GiveTheirRowsOrTheirMessage) {
  for (const TCaseText& one : ReadCaseFile(std::string("ddl/") + GetParam() + ".txt").cases) {
    SCOPED_TRACE(one.name);
    TStringList parts = one.Parts();
    if (parts.size() == 2) parts.emplace(parts.begin());
    ASSERT_EQ(parts.size(), 3U);
    const std::string expected = parts[2].empty() ? "" : parts[2] + "\n";
    EXPECT_EQ(Outcome(parts[0], parts[1]), expected);
    if (GetParam() != std::string("comments") && expected.find("offset") == std::string::npos)
      EXPECT_EQ(Outcome(WithCrLf(parts[0]), WithCrLf(parts[1])), expected) << "with CR LF";
  }
}

INSTANTIATE_TEST_SUITE_P(DDLParser, DDLCases,
                         ::testing::Values("statements", "keys", "constraints", "columns", "comments"),
                         [](const auto& file) { return file.param; });

TEST(DDLParser, BlanksAtTheEndAreMissedWords) {
  const std::pair<const char*, const char*> kTexts[] = {
      {"create table t (a int); ", "Word expected at offset 25."},
      {"  \t", "Word expected at offset 4."},
      {"/* one */create table t (a int) /* two */;  ", "Word expected at offset 26."},
      {"/* a */\r\n/* b */", "Word expected at offset 2."},
      {"create table t (a int); alter table t add c int(5) ", "Word expected at offset 52."},
  };
  for (const auto& [text, message] : kTexts) EXPECT_EQ(MessageOf([&] { TParserHost().ParseDDL(text); }), message);
}

TEST(DDLParser, DefaultsAreKeptAsTheirTypeHasThem) {
  for (const TCaseText& kind : ReadCaseFile("ddl/defaults.txt").cases) {
    for (const std::string& row : kind.lines) {
      const std::size_t arrow = row.find(" ->");
      for (const char* end : {");", " null);", "\r\nnull\r\n);", ", z int);"}) {
        TParserHost host;
        host.ParseDDL("create table t (a " + row.substr(0, arrow) + end);
        host.meta().tColumns.First();
        EXPECT_EQ(row.substr(std::min(arrow + 4, row.size())), host.meta().tColumns.Current().default_) << row << end;
      }
    }
  }
}

// --- Behaviour around the store

TEST(DDLParser, TheCreatedTableIsCurrentAndNotFetched) {
  TParserHost host;
  host.ParseDDL("create table t (a int); create table u (a int); create table T (b int);");
  EXPECT_EQ("T", host.CurrentTableName());
  EXPECT_FALSE(host.meta().tTables.Current().fetched);
  EXPECT_EQ(kNoCachedDDL, host.meta().tTables.Current().cached_ddl);
  EXPECT_FALSE(host.meta().tColumns.IsOpen());
}

TEST(DDLParser, ARowOfARefusedClauseStays) {
  TParserHost host;
  EXPECT_EQ("Word null expected, but x found.",
            MessageOf([&] { host.ParseDDL("create table t (a varchar(5) default 'd' not x)"); }));
  EXPECT_TRUE(host.meta().tColumns.IsOpen());
  EXPECT_EQ("table t\ncolumn a <VARCHAR>(5) default='d'\n", DumpMeta(host.meta()));
  host.ParseDDL("alter table t add b int null;");
  EXPECT_EQ("table t\ncolumn a <VARCHAR>(5) default='d'\ncolumn b <I4>\n", DumpMeta(host.meta()));
}

TEST(DDLParser, ClausesWithoutATableBelongToNobody) {
  TParserHost host;
  host.ParseDDL("a int null, key k (a), foreign key (a) references p (b);");
  EXPECT_EQ("", DumpMeta(host.meta()));
  EXPECT_EQ("Can't find table  in metadata", MessageOf([&] { host.ParseDDL("b int first;"); }));
}

// --- Input that nobody means

constexpr char kSample[] =
    "create table if not exists `a b` (`id` int(11) not null auto_increment, `n` decimal(10,2) default '0.00' "
    "after id, s varchar(20) default \"x y\" /* c */ comment 'it\\'s', primary key (`id`), unique key `u` (s(5)), "
    "constraint `f` foreign key (id) references p (x) on delete set null) engine=InnoDB comment='a;b';\r\n"
    "alter table c add column d int first; alter table c change d e text last; alter table c drop index k; "
    "create fulltext index i on c (pid); drop table p; alter table c type=x;";

// Whatever a text holds, it is taken or refused with a message, and soon.
TEST(DDLParser, DamagedTextsEnd) {
  std::mt19937 random(20040405);
  const auto below = [&random](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
  const std::string_view sample = kSample;
  constexpr std::string_view kBytes = "`'\"(),;/*=\\ \n\t.-\0\xff";
  for (int round = 0; round < 5000; ++round) {
    std::string text(sample);
    for (std::size_t change = below(4) + 1; change > 0 && !text.empty(); --change) {
      const std::size_t at = below(text.size());
      switch (below(4)) {
        case 0:
          text.erase(at, below(20) + 1);
          break;
        case 1:
          text[at] = kBytes[below(kBytes.size())];
          break;
        case 2:
          text.insert(at, sample.substr(below(sample.size()), below(30)));
          break;
        default:
          text.resize(at);
      }
    }
    TParserHost host;
    host.ParseDDL(
        "create table p (id int, primary key (id)); create table c (id int, pid int, key k (pid), "
        "constraint f foreign key (pid) references p (id));");
    MessageOf([&] { host.ParseDDL(text); });
    DumpMeta(host.meta());
  }
}

std::string Repeated(std::string_view text, std::size_t count) {
  std::string result;
  result.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

TEST(DDLParser, LongTextsTakeLinearTime) {
  const std::string statement = "create table t (a int) engine=x comment='; ;';";
  const std::string kTexts[] = {
      Repeated(",", 1000000),
      "create table t (a int, key k (" + Repeated("a", 2000000),
      "create table t (a int, key k (" + Repeated("a(", 1000000) + ")",
      Repeated("create table t (", 100000),
      Repeated("(", 1000000),
      Repeated(" ", 2000000),
      Repeated("x", 2000000),
      "create table `" + Repeated("a b", 1000000),
      Repeated("`", 1000000),
      Repeated("` ", 500000),
      "create table t (a int " + Repeated("`a b`c ", 200000),
      "create table t (a text default '" + Repeated("\\'", 500000),
      "create table t (a int default " + Repeated("\" \"x default ", 100000),
      Repeated("/*", 1000000),
      Repeated("/**/", 500000),
      Repeated(statement, 20000),
      "create table t (a int) engine=x '" + Repeated(";", 1000000),
      "create table t (a int null" + Repeated(",a int null", 100000) + ");",
  };
  for (const std::string& text : kTexts) {
    const auto start = std::chrono::steady_clock::now();
    TParserHost host;
    MessageOf([&] { host.ParseDDL(text); });
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    EXPECT_LT(seconds.count(), 5) << text.substr(0, 60);
  }
}

}  // namespace
}  // namespace velmora::testing
