// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/StatementReader.h"

#include <gtest/gtest.h>

#include "support/CaseFile.h"
#include "support/MessageOf.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {
namespace {

using testing::MessageOf;
using testing::ReadCaseFile;
using testing::TCaseText;
using namespace std::string_literals;

// Each statement after its line: "3:select 1".
TStringList Split(const std::string& script) {
  TStringList statements;
  TStatementReader reader(script);
  TStatement statement;
  while (reader.Next(statement))
    statements.push_back(std::to_string(statement.line) + ":" + std::string(statement.text));
  return statements;
}

TEST(StatementReader, Splits) {
  for (const TCaseText& one : ReadCaseFile("creation/statements.txt").cases) {
    const TStringList parts = one.Parts();
    for (const char* line_end : {"\n", "\r\n"}) {
      const TStringList statements = Split(StrReplace(parts.at(0), "\n", line_end));
      EXPECT_EQ(JoinList(statements, line_end), StrReplace(parts.at(1), "\n", line_end)) << one.name;
    }
  }
}

TEST(StatementReader, BlanksAroundStatementsGo) {
  EXPECT_EQ(Split(""), (TStringList{}));
  EXPECT_EQ(Split(" \t\n;; ;\n"), (TStringList{}));
  EXPECT_EQ(Split("\n  a b \n ;\n\tc\n"), (TStringList{"2:a b", "4:c"}));
  EXPECT_EQ(Split("-- x;y'\n# z;\"\n/* ;` \n*/ a;"), (TStringList{"4:a"}));
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
