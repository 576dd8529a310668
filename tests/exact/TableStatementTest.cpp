#include "exact/plan/TableStatement.h"

#include <gmock/gmock.h>

#include "support/CaseRows.h"
#include "support/MessageOf.h"

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
  const struct {
    const char* text;
    ETableStatement kind;
    const char* changes;
    const char* reads = "";
  } cases[] = {
      {"create table if not exists `a``b`.c (x int)", CreateTable, "a`b.c"},
      {"CREATE OR REPLACE TABLE t LIKE d.s", ReplaceTable, "t", "d.s"},
      {"create table t (like s)", CreateTable, "t", "s"},
      {"create temporary table t (a int)", Other, ""},
      {"alter online ignore table t rename column a to b, rename to u, rename index i to j", AlterTable, "t,u"},
      {"alter table t exchange partition p with table u", AlterTable, "t,u"},
      {"alter table if exists t add (rename_it int), rename = `v`", AlterTable, "t,v"},
      {"drop tables if exists a, d.b cascade", DropTable, "a,d.b"},
      {"drop temporary table t", Other, ""},
      {"rename table a to b, c wait 3 to d.e", RenameTable, "a,b,c,d.e"},
      {"create unique index i using btree on t (a)", CreateIndex, "t"},
      {"create fulltext index if not exists i on t (a)", CreateIndex, "t"},
      {"drop index `on` on t", DropIndex, "t"},
      {"/*!50100 alter table t add a int */", AlterTable, "t"},
      {"create view v as select 1", Other, ""},
      {"drop database d", Other, ""},
      {"rename user a to b", Other, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const TTableStatement read = ReadTableStatement(c.text);
    EXPECT_EQ(read.kind, c.kind);
    EXPECT_EQ(Names(read.changes), c.changes);
    EXPECT_EQ(Names(read.reads), c.reads);
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
