#include "mysqltext/StatementReader.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {
namespace {

using testing::MessageOf;
using namespace std::string_literals;

// Each statement behind its line: "3:select 1".
TStringList Split(const std::string& script) {
  TStringList statements;
  TStatementReader reader(script);
  TStatement statement;
  while (reader.Next(statement))
    statements.push_back(std::to_string(statement.line) + ":" + std::string(statement.text));
  return statements;
}

struct TCase {
  const char* name;
  std::string script;
  TStringList statements;
};

const TCase kCases[] = {
    {"empty", "", {}},
    {"blanks and empty statements", " \t\n;; ;\n", {}},
    {"last needs no end", "a;b", {"1:a", "1:b"}},
    {"trimmed", "\n  a b \n ;\n\tc\n", {"2:a b", "4:c"}},
    {"end in single quotes", "a ';' b;c", {"1:a ';' b", "1:c"}},
    {"end in double quotes", "a \";\" b;c", {"1:a \";\" b", "1:c"}},
    {"end in backticks", "a `;` b;c", {"1:a `;` b", "1:c"}},
    {"one quote in another", "a '\"' ; \"'`\" ; `'` ;", {"1:a '\"'", "1:\"'`\"", "1:`'`"}},
    {"backslash hides a quote", "'\\';' ; \"\\\";\" ; c", {"1:'\\';'", "1:\"\\\";\"", "1:c"}},
    {"backslash hides itself", "'\\\\' ; \"\\\\\" ; c", {"1:'\\\\'", "1:\"\\\\\"", "1:c"}},
    {"backslash in backticks is plain", "`\\` ; c", {"1:`\\`", "1:c"}},
    {"doubled quotes", "'it''s;' ; \"a\"\";\" ; `b``;` ; c", {"1:'it''s;'", "1:\"a\"\";\"", "1:`b``;`", "1:c"}},
    {"empty quotes", "'' ; \"\" ; `` ; c", {"1:''", "1:\"\"", "1:``", "1:c"}},
    {"comments in front", "-- x;y'\n# z;\"\n/* ;` \n*/ a;", {"4:a"}},
    {"comments inside stay", "a -- x;'\n b # y;\n c /* z; */ d;e", {"1:a -- x;'\n b # y;\n c /* z; */ d", "3:e"}},
    {"executable comments are comments", "/*!40101 SET a=1 */;\n/*M!999999\\- x */\nb;", {"3:b"}},
    {"dashes need a blank", "a--b;c--\td;\ne-- ';'", {"1:a--b", "1:c--\td;\ne"}},
    {"dashes at the end", "a;--", {"1:a"}},
    {"dashes at a line end", "a--\n;b", {"1:a--", "2:b"}},
    {"no comment", "a - b / c /d*/;e", {"1:a - b / c /d*/", "1:e"}},
    {"a star within the opening", "/*/ a; */ b", {"1:b"}},
    {"line comments behind the last", "a\n-- x\n\n# y;\n", {"1:a"}},
    {"block comment behind the last", "a\n# x\n/*!1 b */", {"1:a\n# x\n/*!1 b */"}},
    {"comment before more of the last", "a\n-- x\nb -- y\n", {"1:a\n-- x\nb"}},
    {"delimiter line", "a;\nDELIMITER $$\nb;c$$\nd $$ delimiter ;\ne;f", {"1:a", "3:b;c", "4:d", "5:e", "5:f"}},
    {"delimiter of slashes", "delimiter // now\n/* ; */ a; / b //\nc//", {"2:a; / b", "3:c"}},
    {"delimiter twice the usual", "delimiter ;;\na; b ;;\ndelimiter ;\nc;", {"2:a; b", "4:c"}},
    {"delimiter without argument", "delimiter\na;b;delimiter", {"2:a", "2:b"}},
    {"delimiter without argument keeps the one there is", "delimiter //\na//\ndelimiter\nb;c//", {"2:a", "4:b;c"}},
    {"no delimiter line", "delimiters ;\na delimiter //\n;b", {"1:delimiters", "2:a delimiter //", "3:b"}},
};

std::string WithCrLf(const std::string& text) { return StrReplace(text, "\n", "\r\n"); }

TEST(StatementReader, Splits) {
  for (const TCase& row : kCases) EXPECT_EQ(Split(row.script), row.statements) << row.name;
}

TEST(StatementReader, SplitsAlikeWithCarriageReturns) {
  for (const TCase& row : kCases) {
    TStringList expected;
    for (const std::string& statement : row.statements) expected.push_back(WithCrLf(statement));
    EXPECT_EQ(Split(WithCrLf(row.script)), expected) << row.name;
  }
}

TEST(StatementReader, RefusesWhatIsNotClosed) {
  const struct {
    std::string script;
    const char* message;
  } kFaults[] = {
      {"a;\nb 'c\n\n;", "line 2: unclosed ' quote"},
      {"a;\n\nb \"c\\\"", "line 3: unclosed \" quote"},
      {"`a\n", "line 1: unclosed ` quote"},
      {"'a\\", "line 1: unclosed ' quote"},
      {"'", "line 1: unclosed ' quote"},
      {"a;\n/* b", "line 2: unclosed comment"},
      {"a /*\n*", "line 1: unclosed comment"},
      {"/*/", "line 1: unclosed comment"},
      {"a;\nb\0'"s, "line 2: NUL byte: this is no text file"},
  };
  for (const auto& row : kFaults) EXPECT_EQ(MessageOf([&] { Split(row.script); }), row.message) << row.script;
}

TEST(StatementReader, TextsAreParts) {
  const std::string script = "  create table t (a int) ;";
  TStatementReader reader(script);
  TStatement statement;
  ASSERT_TRUE(reader.Next(statement));
  EXPECT_EQ(statement.text.data(), script.data() + 2);
}

TEST(StatementReader, PassesOneLineOfManyStatements) {
  constexpr std::size_t kCount = 200000;
  std::string script;
  for (std::size_t i = 0; i < kCount; ++i) script += "insert into t values ('a;\\'', 1 - 2);# x;";
  script = StrReplace(script, "# x;", "");
  EXPECT_EQ(Split(script).size(), kCount);
  EXPECT_EQ(Split(std::string(1 << 20, '-') + ";a").size(), 2u);
  EXPECT_EQ(Split("a" + std::string(1 << 20, '\n') + "# b").size(), 1u);
}

}  // namespace
}  // namespace velmora
