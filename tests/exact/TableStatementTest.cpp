// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/TableStatement.h"

#include <gmock/gmock.h>

#include <map>

#include "support/CaseFile.h"
#include "support/MessageOf.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::MessageOf;

std::string Names(const std::vector<TTableName>& names) {
  std::string text;
  for (const TTableName& name : names)
    text += (text.empty() ? "" : ",") + (name.database.empty() ? "" : name.database + ".") + name.table;
  return text;
}

TEST(TableStatementTest, FindsTheTablesThatAStatementIsAbout) {
  using enum ETableStatement;
  const std::map<ETableStatement, std::string> words = {{CreateTable, "creates"}, {ReplaceTable, "replaces"},
                                                        {AlterTable, "alters"},   {DropTable, "drops"},
                                                        {RenameTable, "renames"}, {CreateIndex, "makes an index of"},
                                                        {Other, "other"},         {DropIndex, "drops an index of"}};
  for (TStringList& row : testing::CaseRows("exact/statements.txt")) {
    row.resize(3);
    const TTableStatement read = ReadTableStatement(row[0]);
    EXPECT_EQ(Trim(words.at(read.kind) + " " + Names(read.changes)), row[1]) << row[0];
    EXPECT_EQ(Names(read.reads), row[2]) << row[0];
  }
  EXPECT_EQ(ReadTableStatement("create schema if not exists `s`").database, "s");
  EXPECT_EQ(ReadTableStatement("use s").database, "s");
}

TEST(TableStatementTest, WhatStaysWithinIsRunWithoutItsOwnDatabase) {
  const struct {
    const char* text;
    const char* run;
  } cases[] = {
      {"create table own.t (a int /* why */ , -- it\n b int references `own` . p (id))",
       "create table t (a int , b int references p (id))"},
      {"create table t (a int, check (t.a > 0 and own.t.a < 9), engine varchar(9), connection text)",
       "create table t (a int, check (t.a > 0 and t.a < 9), engine varchar(9), connection text)"},
      {"create table own.own (a int comment 'x.y /*', check (a > 1.5)) engine = InnoDB",
       "create table own (a int comment 'x.y /*', check (a > 1.5)) engine = InnoDB"},
      {"rename table own.a to b, c to own.d", "rename table a to b, c to d"},
      {"/*!50100 alter table own.t add a int */", "/*!50100 alter table t add a int */"},
  };
  for (const auto& c : cases) EXPECT_EQ(TextForScratch(c.text, "own"), c.run);
  for (const char* same :
       {"alter table t add column engine varchar(3) after type, add `union` int, modify `connection` char(1) default "
        "'x'",
        "create table t (a int) type=heap tablespace=innodb_file_per_table partition by key algorithm = 2 (a) "
        "(partition p engine=memory)",
        "create table t (a int) partition by list (a) (partition p values in (1), partition q values in (2))"})
    EXPECT_EQ(TextForScratch(same, "own"), same);
}

TEST(TableStatementTest, WhatReachesOutsideIsRefused) {
  for (const TStringList& row : testing::CaseRows("exact/reaches_outside.txt"))
    EXPECT_THAT(MessageOf([&] { TextForScratch(row[0], "own"); }), HasSubstr(row.at(1))) << row[0];
}

}  // namespace
}  // namespace velmora
