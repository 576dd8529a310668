// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FileStatements.h"

#include <gmock/gmock.h>

#include "mysqltext/CreationScript.h"
#include "support/MessageOf.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::MessageOf;

// "3: statement" each.
TStringList Lines(const std::string& script, const std::string& database = {}) {
  TStringList lines;
  const TCreationScript file(script, {database});
  for (const TLocatedStatement& statement : ReadFileStatements(file.Structure()).statements)
    lines.push_back(StrReplace(statement.place, "line ", "") + ": " + statement.text);
  return lines;
}

TEST(FileStatementsTest, TakesStatementsOnTablesAloneInCommentsForVersionsToo) {
  EXPECT_THAT(Lines("-- head\n/*!40101 SET NAMES utf8 */;\n/* note */ create table t (a int);\n"
                    "insert into t values ('create table u (a int);');\n\n"
                    "/*!50100 alter table t add b int */ ;\ncreate index i on t (a);\n"
                    "delimiter //\ncreate procedure p() begin drop table t; end//\n/*!50003 drop index i on t */ //\n"
                    "delimiter ;\ndrop table t"),
              ElementsAre("3: create table t (a int)", "6: /*!50100 alter table t add b int */",
                          "7: create index i on t (a)", "10: /*!50003 drop index i on t */", "12: drop table t"));
  EXPECT_THAT(
      ReadFileStatements(TCreationScript("set a = 1;\n\ncall fill();\ncreate table t (a int);").Structure()).warnings,
      ElementsAre("line 3: \"call fill()\" is not run: tables that it makes or changes are not known"));
}

TEST(FileStatementsTest, TheFilesOwnDatabaseIsWhatItUsesMakesOrNamesFirst) {
  for (const std::string head : {"use d", "create database if not exists `d`; use `d`", "create schema d",
                                 "create table d.first (a int)", "create database e; create database d; use d"})
    EXPECT_EQ(Lines(head + ";\ncreate table d.t (a int)").back(), "2: create table t (a int)") << head;
  EXPECT_THAT(Lines("create database d; use d; select 1"), IsEmpty());
  EXPECT_THAT(Lines("use d; create table a (x int); use e;\ncreate table b (x int);\nalter table d.a drop x", "d"),
              ElementsAre("1: create table a (x int)", "3: alter table a drop x"));
  EXPECT_EQ(MessageOf([] { Lines("create table t (a int);\ncreate table e.u (a int);\nalter table f.v drop c"); }),
            "line 2: table u: it names the database e, which is not the file's own\n"
            "line 3: table v: it names the database f, which is not the file's own");
  EXPECT_EQ(MessageOf([] { Lines("use d; create table t (a int);\ndrop table f.v"); }),
            "line 2: table v: it names the database f, which is not the file's own");
}

}  // namespace
}  // namespace velmora
