#include "exact/plan/TableStatement.h"

#include <gmock/gmock.h>

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
      {"alter table t add column engine varchar(3) after type, add `union` int, modify `connection` char(1) default "
       "'x'",
       "alter table t add column engine varchar(3) after type, add `union` int, modify `connection` char(1) default "
       "'x'"},
      {"create table t (a int) type=heap tablespace=innodb_file_per_table partition by key algorithm = 2 (a) "
       "(partition p "
       "engine=memory)",
       "create table t (a int) type=heap tablespace=innodb_file_per_table partition by key algorithm = 2 (a) "
       "(partition p "
       "engine=memory)"},
      {"create table t (a int) partition by list (a) (partition p values in (1), partition q values in (2))",
       "create table t (a int) partition by list (a) (partition p values in (1), partition q values in (2))"},
      {"/*!50100 alter table own.t add a int */", "/*!50100 alter table t add a int */"},
  };
  for (const auto& c : cases) EXPECT_EQ(TextForScratch(c.text, "own"), c.run);
}

TEST(TableStatementTest, WhatReachesOutsideIsRefused) {
  const struct {
    const char* text;
    const char* fault;
  } cases[] = {
      {"create table other.t (a int)", "it names the database other, which is not the file's own"},
      {"create table `Own`.t (a int)", "database Own"},
      {"create table t (a int, foreign key (a) references other.p (id))", "database other"},
      {"create table t (a int references t.p (id))", "database t"},
      {"create table t like `other`.s", "database other"},
      {"create table t (a int default nextval(t.s))", "database t"},
      {"create table t (a int default (other.f()))", "database other"},
      {"create table other . 1e5 (a int)", "database other"},
      {"alter table t rename other.u", "database other"},
      {"alter table t exchange partition p with table other.u", "database other"},
      {"rename table t to other.t", "database other"},
      {"drop table a, other.b", "database other"},
      {"create index i on other.t (a)", "database other"},
      {"create table t (a int) data directory '/tmp'", "it says data directory"},
      {"create table t (a int) /*!50100 partition by hash (a) (partition p INDEX DIRECTORY = '/x') */",
       "it says INDEX directory"},
      {"create table t (a int) connection='mysql://h/d/t'", "it says connection"},
      {"alter table t comment 'x' connection 'h'", "it says connection"},
      {"create table t (a int) engine=merge union=(a, b)", "it says union"},
      {"alter table t tablespace ts", "it says tablespace"},
      {"create table t (a int) engine 'FEDERATED'", "engine FEDERATED may reach"},
      {"create table t (a int) engine=connect file_name='/etc/passwd'", "engine connect may reach"},
      {"alter table t engine `spider`", "engine spider may reach"},
      {"create table t (a int) partition by hash (a) (partition p engine s3)", "engine s3 may reach"},
      {"create table t type=federated (a int)", "engine federated may reach"},
      {"create table t (a int) ignore select 1 as a", "it takes rows or columns from a query (select)"},
      {"create table t as (with c as (select 1) select * from c)", "(select)"},
      {"create table t as table u", "(table)"},
      {"create table t (values row(1))", "(values)"},
  };
  for (const auto& c : cases)
    EXPECT_THAT(MessageOf([&] { TextForScratch(c.text, "own"); }), HasSubstr(c.fault)) << c.text;
}

}  // namespace
}  // namespace velmora
