// SPDX-License-Identifier: GPL-3.0-or-later

// What a script may lose, by its text, over a target that is a file of creation texts.

#include <gtest/gtest.h>

#include "app/Application.h"
#include "engines/mysql/OfflineEngine.h"
#include "support/RecordingPorts.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Lists.h"

namespace velmora {
namespace {

constexpr char kTarget[] =
    "CREATE TABLE `t` (\n  `a` bigint NOT NULL,\n  `b` varchar(9) DEFAULT NULL,\n  `c` int NOT NULL,\n"
    "  PRIMARY KEY (`a`),\n  UNIQUE KEY `u` (`b`),\n  KEY `k` (`c`),\n"
    "  CONSTRAINT `f` FOREIGN KEY (`c`) REFERENCES `p` (`id`)\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;\n"
    "CREATE TABLE `gone` (\n  `x` int DEFAULT NULL\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;\n";
constexpr char kReference[] =
    "CREATE TABLE `t` (\n  `a` int NOT NULL,\n  `b` varchar(20) DEFAULT NULL,\n  `d` text COMMENT 'x;\ny',\n"
    "  PRIMARY KEY (`a`),\n  KEY `u` (`b`)\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;\n"
    "CREATE TABLE `new` (\n  `x` int DEFAULT NULL\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;\n";
constexpr char kPlanned[] =
    "gone: Obsolete table gone: the table is dropped with its rows\n"
    "t: Obsolete column c: the column is dropped with its values\n"
    "t: Changed column a: bigint to int: values may be out of range\n"
    "t: Changed index u: equal rows may enter from then on";

class UnsafeStatementsTest : public ::testing::Test {
 protected:
  UnsafeStatementsTest() : app_(progress_, editor_, log_, SystemClock()) {
    WriteFileText(folder_ / "a.sql", kReference);
    WriteFileText(folder_ / "b.sql", kTarget);
    app_.Choose(EDialect::Exact);
    app_.OpenTask(std::make_unique<TDBConnMySQLOffline>(folder_ / "a.sql"),
                  std::make_unique<TDBConnMySQLOffline>(folder_ / "b.sql"));
  }
  std::string Unsafe(const std::string& script) { return JoinList(app_.Dialect().UnsafeStatements(script), "\n"); }

  testing::TScratchFolder folder_;
  TNoProgress progress_;
  TLineEditor editor_;
  testing::TRecordingLog log_;
  TApplication app_;
};

TEST_F(UnsafeStatementsTest, OfTheWrittenScriptTheActionsAreTold) {
  app_.Compare();
  app_.Dialect().GenerateScript();
  EXPECT_EQ(Unsafe(editor_.Text()), kPlanned);
  EXPECT_EQ(Unsafe("drop table `gone`"), "gone: Obsolete table gone: the table is dropped with its rows");
  EXPECT_EQ(
      Unsafe("alter table gone drop x;" + editor_.Text()),
      std::string(kPlanned) + "\nline 1: alter table gone drop x: column x: the column is dropped with its values");
  while (!app_.data.mtActions.Empty()) app_.data.mtActions.Delete(app_.data.mtActions.First()->id);
  EXPECT_EQ(Unsafe("\r\ndrop\r\ntable `gone`"), "line 2: drop table `gone`: the table is dropped with its rows");
}

TEST_F(UnsafeStatementsTest, WhatLosesNothingPasses) {
  for (const char* script :
       {"", "-- drop table t;\n/* truncate t */ # delete", "set names utf8mb4, @a = 'drop', session sql_mode=''",
        "set sql_mode = replace(replace(@@sql_mode, 'A', ''), 'B', ''), @b = 1",
        "/*!40101 SET @OLD_SQL_MODE=@@SQL_MODE, SQL_MODE='NO_AUTO_VALUE_ON_ZERO' */;",
        "set foreign_key_checks = @velmora_foreign_key_checks",
        "create table n (a int); insert into n values ('drop;')",
        "create table n like t; create unique index i on t (c)", "lock tables t write; unlock tables; commit",
        "/*!40000 ALTER TABLE `t` DISABLE KEYS */", "select count(*) from t where c in (1, 2)",
        "alter table t add column d int first, add (e int, f int), add index (d), engine=InnoDB comment 'x, drop a'",
        "alter table t drop key k, drop foreign key f, drop constraint f, alter column c set default 3",
        "alter table t modify c bigint not null, change b b varchar(30)",
        "alter table t modify c bigint not null, convert to character set utf8mb4",
        "ALTER TABLE `t` MODIFY COLUMN `b` varchar(20) AFTER `c`; drop index k on t",
        "create table n (a int); alter table n modify a bigint",
        "alter table t add partition (partition p9 values less than (9)), algorithm=inplace, lock=none",
        "alter table t comment='x' partition by hash (a) partitions 4"})
    EXPECT_EQ(Unsafe(script), "") << script;
}

TEST_F(UnsafeStatementsTest, WhatMayLoseIsNamedWithItsReason) {
  constexpr char kUnknown[] = "what it does is not known";
  const struct {
    const char* script;
    std::string reason;  // of the last statement
  } cases[] = {
      {"drop table if exists n, t", "the table is dropped with its rows"},
      {"/*!50000 drop table t */", "the table is dropped with its rows"},
      {"/* x */ Drop /* y */ Tables t", "the table is dropped with its rows"},
      {"drop view v", "what it names is dropped"},
      {"drop database d", "the database is dropped with all that it holds"},
      {"create or replace table t (a int)", "what has the name already is dropped"},
      {"truncate t", "all rows are removed"},
      {"delete from t", "rows are removed"},
      {"update t set a = 1", "values are replaced"},
      {"insert into t values (1) on duplicate key update a = 2", "values are replaced"},
      {"replace into t values (1)", "rows with an equal key are replaced"},
      {"rename table t to u", "the table gets another name"},
      {"use other", "the statements after it are about another database"},
      {"alter table t rename to u", "the table gets another name"},
      {"alter table t drop a, drop column `b`",
       "column a: the column is dropped with its values; column b: the column is dropped with its values"},
      {"alter table d.t drop if exists a", "column a: the column is dropped with its values"},
      {"alter table t modify c smallint", "column c: int to smallint: values may be out of range"},
      {"alter table t change c d int not null", "column c: the column gets another name"},
      {"alter table t rename column c to d", "the column gets another name"},
      {"alter table t drop primary key", "key PRIMARY: equal rows may enter from then on"},
      {"alter table t drop index u", "key u: equal rows may enter from then on"},
      {"alter table t drop constraint u", "key u: equal rows may enter from then on"},
      {"alter table n drop index i", "key i: whether equal rows may enter from then on is not known"},
      {"drop index u on t", "key u: equal rows may enter from then on"},
      {"alter table t add d int, drop partition p1", "the rows of the partition are removed"},
      {"alter table t engine memory", "options: the engine keeps its rows until the server ends"},
      {"alter table t convert to charset latin1", "letters that the character set does not have are lost"},
      {"alter table t character set latin1, modify b varchar(9)",
       "column b: what the new character set makes of its letters is not known"},
      {"alter table d.t modify c bigint",
       "column c: what it does to the values is not known, as the table as it is could not be read"},
      {"alter table t modify column c bigint not null; alter table t modify c int not null",
       "column c: bigint to int: values may be out of range"},
      {"alter ignore table t add unique (c)", "rows and values that do not fit are dropped or changed"},
      {"alter table t discard tablespace", kUnknown},
      {"alter table t exchange partition p with table u", kUnknown},
      {"alter table t partition by hash (a), drop b", "column b: the column is dropped with its values"},
      {"call p()", kUnknown},
      {"set @a = f()", kUnknown},
      {"set names utf8, global read_only = 0", kUnknown},
      {"set statement sql_mode = '' for delete from t", kUnknown},
      {"select f(1)", kUnknown},
      {"select a into outfile 'x' from t", kUnknown},
      {"begin not atomic delete from t", kUnknown},
      {"create trigger r before insert on t for each row set @a = 1", kUnknown},
      {"drop table t 'unclosed", kUnknown},
  };
  for (const auto& c : cases) {
    const TStringList lines = app_.Dialect().UnsafeStatements(c.script);
    ASSERT_EQ(lines.size(), 1U) << c.script;
    EXPECT_TRUE(lines.front().ends_with(": " + c.reason)) << lines.front();
  }
}

}  // namespace
}  // namespace velmora
