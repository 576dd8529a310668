// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ScriptSplitter.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

// "text @position" of each statement, and the number of pieces.
std::string Told(std::string_view script, TScriptSplitter splitter = SplitScript) {
  const TScriptPieces split = splitter(script);
  std::string told;
  for (const TScriptStatement& statement : split.statements)
    told += "[" + statement.text + " @" + std::to_string(statement.position) + "] ";
  return told + std::to_string(split.pieces);
}

TEST(ScriptSplitterTest, Cuts) {
  const struct {
    const char* what;
    const char* script;
    const char* told;
  } cases[] = {
      {"nothing", "", "1"},
      {"the position is that of the piece's last character", "select 1", "[select 1 @7] 1"},
      {"one character after each cut is lost", "a;b;c", "[a @0] 3"},
      {"line ends are what is lost in a script", "a 1;\r\nb 2;\r\n", "[a 1 @2] [b 2 @7] 3"},
      {"offsets fall behind by one a statement", "aa;\naa;\naa;\n", "[aa @1] [aa @4] [aa @7] 4"},
      {"quotes hide a separator", "insert '1;2';\r\nb", "[insert '1;2' @11] [b @14] 2"},
      {"double quotes too", "insert \"1;2\";\r\nb", "[insert \"1;2\" @11] [b @14] 2"},
      {"a comment hides none, and takes its piece", "a --x;y\r\n;\r\nb", "[b @10] 3"},
      {"comments go with the character before them", "ab--x\r\nc;", "[a\nc @7] 2"},
      {"a comment without carriage return takes its piece", "a\r\nb --x", "1"},
      {"a mark within a literal begins a comment", "insert '--1';\r\nb", "[b @14] 2"},
  };
  for (const auto& c : cases) EXPECT_EQ(Told(c.script), c.told) << c.what;
}

// What the standard dialect loses stays whole, and positions are where statements begin.
TEST(ScriptSplitterTest, CutsOfTheExactDialect) {
  const struct {
    const char* script;
    const char* told;
  } cases[] = {
      {"-- head; it's\r\n\r\na;b ;\nc", "[a @17] [b @19] [c @23] 3"},
      {"a '--;';b `x;``y` /* ; */ \"z;\"", "[a '--;' @0] [b `x;``y` /* ; */ \"z;\" @8] 2"},
      {"a 'it''s \\' ;';\n-- end;\n", "[a 'it''s \\' ;' @0] 1"},
  };
  for (const auto& c : cases) EXPECT_EQ(Told(c.script, SplitExactScript), c.told) << c.script;
}

TEST(ScriptSplitterTest, TheHeaderOfAScriptLeavesItsFirstStatement) {
  const TScriptPieces split =
      SplitScript("--Script created\r\n--Modifying\r\n\r\nset foreign_key_checks=0;\r\n\r\ndrop table t;\r\n");
  ASSERT_EQ(split.statements.size(), 2u);
  EXPECT_EQ(split.statements[0].text, "set foreign_key_checks=0");
  EXPECT_EQ(split.statements[0].start, 33u) << "comments and blanks in front are passed";
  EXPECT_EQ(split.statements[1].start, 62u) << "starts are true where positions fall behind";
}

TEST(ScriptSplitterTest, AScriptOfManyStatementsIsCutInLinearTime) {
  std::string script;
  for (int i = 0; i < 200000; ++i) script += "insert into t values ('it''s; so', \"a;b\");\r\n";
  EXPECT_EQ(SplitScript(script).statements.size(), 200000u);
}

}  // namespace
}  // namespace velmora
