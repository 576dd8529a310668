// SPDX-License-Identifier: GPL-3.0-or-later

// The exact dialect against a real server.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>

#include "app/Application.h"
#include "app/ExactDialect.h"
#include "app/Tasks.h"
#include "engines/mysql/OfflineEngine.h"
#include "exact/Cases.h"
#include "mysqlclient/mysqlUtil.h"
#include "mysqltext/StatementReader.h"
#include "support/LiveDatabase.h"
#include "support/MessageOf.h"
#include "support/RecordingHost.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAreArray;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::MessageOf;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;
using testing::TLiveDatabase;
using testing::TTableCase;

class ExactLiveTest : public ::testing::Test {
 protected:
  ExactLiveTest() { app_.Choose(EDialect::Exact); }

  TExactSync& Exact() { return dynamic_cast<TExactDialect&>(app_.Dialect()).sync; }
  void Open() { app_.TakeTask({reference_.NewEngine(), target_.NewEngine()}); }
  void OpenWithReferenceFile(const std::string& text) {
    WriteFileText(folder_ / "reference.sql", text);
    app_.TakeTask({std::make_unique<TDBConnMySQLOffline>(folder_ / "reference.sql"), target_.NewEngine()});
  }
  std::string Script() {
    app_.Dialect().GenerateScript();
    return editor_.Text();
  }
  // Compares, proves on the server, runs, compares again; gives the log of the first comparison.
  TStringList Sync() {
    app_.Compare();
    TStringList log = app_.Dialect().ActionLog();
    EXPECT_EQ(Exact().DifferencesLeft(), 0);
    EXPECT_EQ(Exact().VerifyOnServer(), 0);
    app_.RunScript(Script());
    app_.Compare();
    EXPECT_TRUE(app_.Dialect().Identical()) << JoinList(app_.Dialect().ActionLog(), "\n");
    EXPECT_THAT(Exact().Plan(), IsEmpty());
    return log;
  }
  std::string Ask(const std::string& query) { return testing::Answer(target_.Connection(), query); }
  std::string ScratchDatabases() {
    return Ask("select count(*) from information_schema.schemata where schema_name like 'velmora%'");
  }
  // Sequences and versioned tables are MariaDB's: of lines that speak of others, all are left elsewhere.
  static TStringList OfThisServer(std::initializer_list<const char*> lines) {
    TStringList kept;
    for (const std::string line : lines) {
      const bool foreign = line.find("sequence") != std::string::npos || line.find("system") != std::string::npos ||
                           line.find("table h") != std::string::npos;
      if (!foreign || !testing::OnMySQL()) kept.push_back(line);
    }
    return kept;
  }
  static void RunAll(TLiveDatabase& database, std::initializer_list<const char*> statements) {
    for (const std::string& statement : OfThisServer(statements)) database.Run(statement);
  }
  static bool Takes(TLiveDatabase& database, const std::string& statement) {
    return MessageOf([&] { database.Run(statement); }) == "nothing raised";
  }
  static void RunFile(TLiveDatabase& database, const std::string& file) {
    const std::string script = ReadFileText(file);
    TStatementReader reader(script);
    for (TStatement statement; reader.Next(statement);) database.Run(std::string(statement.text));
  }

  testing::TScratchFolder folder_;
  TLiveDatabase reference_{"exact_reference"};
  TLiveDatabase target_{"exact_target"};
  TNoProgress progress_;
  TLineEditor editor_;
  TLineLog log_{SystemClock(), progress_};
  TApplication app_{progress_, editor_, log_, SystemClock()};
};

// What is left out is neither read nor changed; a foreign key into it stays.
TEST_F(ExactLiveTest, SelectionsLeaveAloneWhatTheyDoNotName) {
  RunAll(reference_,
         {"create table tmp_p (id int primary key, n int)",
          "create table o (id int primary key, total int, pid int, key ix_a (total), constraint f foreign "
          "key (pid) references tmp_p (id))",
          "create trigger tr before insert on o for each row set new.total = 1", "create view v as select 1 as a"});
  RunAll(target_, {"create table tmp_p (id int primary key)", "create table tmp_q (a int)",
                   "create table o (id int primary key, total bigint)", "insert into tmp_q values (1)"});
  Open();
  TExactWishes wishes = ReadExactWishes("except tmp_*\nexcept view:*\nexcept index:o.ix_*");
  app_.Take({.exact = wishes});
  TStringList log = Sync();
  EXPECT_THAT(log, Contains("Left out: 2 tables, 1 object beside tables, 1 difference in tables"));
  EXPECT_EQ(Ask("select (select count(*) from tmp_q) + (select count(*) from information_schema.columns where "
                "table_schema = database() and table_name = 'tmp_p')"),
            "2");
  EXPECT_EQ(Exact().TargetText("tmp_p"), "");
  wishes = ReadExactWishes("only trigger:t?");
  app_.Take({.exact = wishes});
  app_.Compare();
  EXPECT_TRUE(app_.Dialect().Identical());
  EXPECT_EQ(Exact().TargetText("o"), "");
  // What is named here would be refused with checks on: nothing that is compared makes the other table.
  target_.Run("drop table o, tmp_p");
  app_.Take({.exact = ReadExactWishes("only o")});
  EXPECT_THAT(Sync(),
              Contains("Foreign key f of table o refers to table tmp_p, which is left out and not in the target"));
}

// A switch makes differences equal on a server as in memory.
TEST_F(ExactLiveTest, WhatIsToBeIgnoredIsNoDifference) {
  reference_.Run("create table t (a varchar(3) comment 'x', b int) charset=latin1 comment='t' partition by hash (b)");
  target_.Run("create table t (b int, a varchar(3) character set utf8mb4) charset=latin1");
  Open();
  app_.Take({.exact = ReadExactWishes("ignore column-order\nignore comments\nignore charset\nignore partitions")});
  app_.Compare();
  EXPECT_TRUE(app_.Dialect().Identical()) << JoinList(app_.Dialect().ActionLog(), "\n");
  EXPECT_THAT(app_.Dialect().ActionLog(), Contains("Taken as equal: comments (2)"));
  app_.Take({.exact = ReadExactWishes("ignore column-order\nignore charset\nignore partitions")});
  Sync();
  EXPECT_EQ(Ask("select concat(ordinal_position, column_comment) from information_schema.columns where table_schema = "
                "database() and column_name = 'a'"),
            "2x");
}

// Rows are kept, and all that hangs on the names follows: keys, expressions, partitions, foreign keys of other tables,
// triggers; views that name them are written anew.
TEST_F(ExactLiveTest, RenamesKeepRowsAndWhatHangsOnThem) {
  RunAll(
      reference_,
      {"create table client (ident int primary key, title varchar(20), unique key u (title))",
       "create table o (id int not null, sum int, g int as (sum + 1) stored, v int as (sum + 2) virtual, cid int, key "
       "ix (sum), constraint c check (sum > 0), constraint f foreign key (cid) references client (ident))",
       "create table p (k int not null, b int) partition by hash (k)",
       "create trigger tr before insert on client for each row set new.title = 'x'",
       "create view w as select sum from o"});
  RunAll(
      target_,
      {"create table customer (id int primary key, title varchar(20), unique key u (title))",
       "create table o (id int not null, total int, g int as (total + 1) stored, v int as (total + 2) virtual, cid "
       "int, key ix (total), constraint c check (total > 0), constraint f foreign key (cid) references customer (id))",
       "create table p (a int not null, b int) partition by hash (a)",
       "create trigger tr before insert on customer for each row set new.title = 'x'",
       "create view w as select total from o", "create view lost as select total from o",
       "insert into customer values (7, 'x')", "insert into o (id, total, cid) values (1, 5, 7)",
       "insert into p values (3, 4)"});
  reference_.Run("create view lost as select 1 as total, 2 as o");
  Open();
  app_.Compare();
  EXPECT_THAT(app_.Dialect().Findings().renames, ::testing::UnorderedElementsAre("o.total=sum", "p.a=k"));
  app_.Take({.exact = ReadExactWishes("rename o.total=sum\nrename p.a=k\nrename customer=client\nrename "
                                      "customer.id=ident")});
  const TStringList log = Sync();
  EXPECT_THAT(log, AllOf(Contains("Renamed table customer to client"), Contains("o: Renamed column total to sum"),
                         Contains("Changed view w: query"), Contains(StartsWith("Verified: 0"))));
  for (const std::string& line : log) EXPECT_THAT(line, Not(HasSubstr("Obsolete")));
  EXPECT_EQ(Ask("select concat_ws(',', ident, sum, g, v, k) from client join o on cid = ident join p"), "7,5,6,7,3");
  EXPECT_THAT(app_.Dialect().ActionLog(), Contains("Rename o.total=sum: the target has the new name already"));
  app_.Take({.exact = ReadExactWishes("rename o.nothing=sums")});
  EXPECT_EQ(MessageOf([&] { app_.Compare(); }), "Rename o.nothing=sums: the reference has no column sums");
}

// The trigger speaks of its table in a mode of its own, and is another one afterwards: there and back.
TEST_F(ExactLiveTest, ATableWithATriggerGoesToItsNewNameAndBack) {
  const char* described =
      "select group_concat(concat_ws('|', trigger_name, event_object_table, action_statement, sql_mode)) from "
      "information_schema.triggers where trigger_schema = 'exact_target'";
  RunAll(reference_, {"create table client (id int, n int)", "set sql_mode = 'ANSI_QUOTES'",
                      "create trigger tr before insert on client for each row set new.\"n\" = 2",
                      "create trigger up before update on client for each row set new.\"n\" = 3"});
  RunAll(target_, {"create table customer (id int, n int)", "set sql_mode = 'ANSI_QUOTES'",
                   "create trigger \"tr\" before insert on \"customer\" for each row set new.\"n\" = 1"});
  const std::string before = Ask(described);
  Open();
  app_.Take({.exact = ReadExactWishes("rename customer=client")});
  app_.Compare();
  const std::string undo = app_.Dialect().UndoScript();
  EXPECT_THAT(Exact().AllObjectChanges(), SizeIs(2));
  Sync();
  EXPECT_THAT(Ask(described), AllOf(HasSubstr("tr|client|"), HasSubstr("up|client|"), Not(HasSubstr("= 1"))));
  app_.RunScript(undo);
  EXPECT_EQ(Ask(described), before);
  EXPECT_THAT(undo, Not(HasSubstr("By a proof")));
}

// Whoever may not name a definer cannot make anew what has it either.
TEST_F(ExactLiveTest, DefinersThatALoginMayNotNameAreToldOfWhatChanges) {
  RunAll(reference_, {"create table t (a int)", "create view v as select 1 as x", "create view w as select 1 as x"});
  RunAll(target_,
         {"drop user if exists half", "create user half", "grant all on exact_target.* to half",
          "create table t (a int)", "create definer = half view v as select 1 as x", "create view w as select 2 as x"});
  app_.TakeTask({reference_.NewEngine(), target_.NewEngine("half")});
  app_.Take({.exact = ReadExactWishes("definer compare")});
  app_.Compare();
  TStringList unsafe;
  for (const TObjectChange& change : Exact().AllObjectChanges()) unsafe.push_back(change.unsafe);
  EXPECT_THAT(unsafe, ElementsAreArray({"this login may not make root@localhost its definer",
                                        "this login may not name its definer root@localhost, and so cannot make it "
                                        "anew"}));
  target_.Run("drop user half");
}

// A server that has shown such a view may refuse a rename once, and forgets keys by hash with each; none copies a table
// while foreign keys name what is renamed.
TEST_F(ExactLiveTest, RenamesBesideWhatServersStumbleOver) {
  const auto make = [](TLiveDatabase& database, const std::string& table, const std::string& a, const std::string& h) {
    database.Run("create table " + table + " (" + a + " int check (" + a + " <> 3), c int, g int as (c > 1), " + h +
                 " varchar(99) not null, unique key k (" + a + ", c) using hash, key p (" + h + "(5)), unique key r (" +
                 a + "), t text not null, primary key (t(9)), key z (t(2), c, " + a + "), unique key q (c, " + h +
                 "(3), g) using hash, f int, constraint m foreign key (f) references p (id))");
    database.Run("create table link (x int, constraint l foreign key (x) references " + table + " (" + a + "))");
    database.Run("create view v as select count(*) as n from " + table + " x join " + table + " y where x.g = y.g");
    database.Run("create trigger tr before insert on " + table + " for each row set new." + a + " = 1");
  };
  for (TLiveDatabase* database : {&reference_, &target_}) database->Run("create table p (id int primary key)");
  make(reference_, "client", "b", "i");
  make(target_, "customer", "a", "h");
  Open();
  app_.Take({.exact = ReadExactWishes("rename customer=client\nrename client.a=b\nrename client.h=i")});
  EXPECT_EQ(MessageOf([&] { Sync(); }), "nothing raised");
  app_.Take({});
  app_.Compare();
  EXPECT_TRUE(app_.Dialect().Identical());
}

// Nothing of a table is changed whose rename is struck out.
TEST_F(ExactLiveTest, ARenameThatIsStruckOutLeavesItsTable) {
  RunAll(reference_,
         {"create table t (b int, c bigint)", "create table s (a int)", "create view v as select b from t"});
  RunAll(target_, {"create table t (a int, c int)", "insert into t values (1, 2)"});
  Open();
  app_.Take({.exact = ReadExactWishes("rename t.a=b")});
  app_.Compare();
  app_.data.mtActions.Delete(Exact().Renames().at(0).id);
  app_.RunScript(Script());
  EXPECT_EQ(Ask("select concat(a, c) from t"), "12");
  app_.Compare();
  EXPECT_EQ(Exact().AllChanges().size() + Exact().AllObjectChanges().size(), 2U);
}

// The statement without those of its lines, but the first and the last, that the server refuses; empty where these are
// refused themselves.
std::string WithoutRefusedLines(const std::string& statement, const std::function<bool(const std::string&)>& takes) {
  TStringList lines;
  SplitPlain('\n', statement, lines);
  if (lines.size() < 2 || !takes(lines.front() + lines.back())) return {};
  std::string taken = lines.front();
  for (std::size_t at = 1; at + 1 < lines.size(); ++at)
    if (takes(taken + "\n" + lines[at] + lines.back())) taken += "\n" + lines[at];
  return taken + "\n" + lines.back();
}

// Whatever its style, a file is the database that its statements make, those that the server takes.
TEST_F(ExactLiveTest, FilesOfApplicationsAreTheirOwnDatabases) {
  for (const auto& entry : std::filesystem::directory_iterator(VELMORA_SOURCE_DIR "/tests/data/applications")) {
    const std::string whole = ReadFileText(entry.path());
    TLiveDatabase database("application"), scratch("scratch");
    for (TLiveDatabase* each : {&database, &scratch}) Takes(*each, "set restrict_fk_on_non_standard_key = 0");
    std::string taken = "delimiter $$\n";
    TStatementReader reader(whole, true);
    for (TStatement read; reader.Next(read);) {
      std::string statement(read.text);
      const auto takes = [&](const std::string& attempt) {
        scratch.Run("drop database scratch"), scratch.Run("create database scratch"), scratch.Run("use scratch");
        return Takes(scratch, attempt);
      };
      bool ran = Takes(database, statement);
      if (!ran) {
        statement = WithoutRefusedLines(statement, takes);
        ran = !statement.empty() && Takes(database, statement);
      }
      if (ran) taken += statement + "$$\n";
    }
    EXPECT_GT(taken.size(), whole.size() / 2) << entry.path();
    const std::string file = folder_ / "application.sql";
    WriteFileText(file, taken);
    app_.TakeTask({std::make_unique<TDBConnMySQLOffline>(file), database.NewEngine()});
    app_.Compare();
    EXPECT_TRUE(app_.Dialect().Identical()) << entry.path() << "\n" << JoinList(app_.Dialect().ActionLog(), "\n");
    EXPECT_THAT(Exact().Plan(), IsEmpty()) << entry.path();
  }
}

// Expressions of random shape, with brackets where none are needed and without some that others would write.
class TExpressionMaker {
 public:
  std::string Number(int depth) {
    if (depth <= 0) return One({"a", "b", "a", "0", "-1", "2.50", "007"});
    const std::string n = Number(depth - 1), m = Number(depth - 1), t = Text(depth - 1), c = Condition(depth - 1);
    return Bracketed(One({n + One({" + ", " - ", "*", " / ", " div ", " mod ", "%", "^", " | ", "&", "<<"}) + m,
                          "-" + n, "mod(" + n + "," + m + ")", "~" + n, "length(" + t + ")", "instr(" + t + ",'x')",
                          "if(" + c + "," + n + "," + m + ")", "case when " + c + " then " + n + " end",
                          "position('y' in " + t + ")", "ifnull(" + n + "," + m + ")"}));
  }
  std::string Text(int depth) {
    if (depth <= 0) return One({"d", "'x'", "'it''s %'"});
    const std::string t = Text(depth - 1), u = Text(depth - 1);
    return One({"concat(" + t + "," + u + ")", "upper(" + t + ")", "substring(" + t + " from 1 for 2)",
                "trim(" + t + ")", "coalesce(" + t + "," + u + ")", "mid(" + t + ",2,1)"});
  }
  std::string Condition(int depth) {
    if (depth <= 0) return One({"a > 1", "a", "not b", "!a", "b is null", "a in (1,2)", "d <> 'x'"});
    const std::string c = Condition(depth - 1), e = Condition(depth - 1), n = Number(depth - 1), m = Number(depth - 1);
    return Bracketed(One({c + One({" and ", " or ", " && ", " || ", " xor "}) + e, "not (" + c + ")", "not " + c,
                          n + One({" = ", " <> ", " != ", " <= ", " > ", " <=> "}) + m, n + " in (" + m + ")",
                          n + One({" between ", " not between "}) + m + " and " + n, c + " is not true",
                          Text(depth - 1) + One({" like ", " not like ", " rlike ", " not regexp "}) + "'x_'"}));
  }

 private:
  std::string One(std::initializer_list<std::string> texts) { return texts.begin()[random_() % texts.size()]; }
  std::string Bracketed(const std::string& text) { return random_() % 3 == 0 ? "(" + text + ")" : text; }
  std::minstd_rand random_{7};
};

TEST_F(ExactLiveTest, ExpressionsAreThoseThatTheServerPrints) {
  TExpressionMaker make;
  std::string script;
  int taken = 0;
  for (int number = 0; number < 150; ++number) {
    const std::string statement =
        Format("create table r%d (a int, b int, d varchar(20), c double as (%s), check (%s));\n", number,
               make.Number(2), make.Condition(number % 4));
    if (!Takes(target_, statement)) continue;  // MySQL is stricter about what stands without brackets
    script += statement;
    ++taken;
  }
  EXPECT_GT(taken, 100);
  OpenWithReferenceFile(script);
  app_.Compare();
  EXPECT_TRUE(app_.Dialect().Identical()) << JoinList(app_.Dialect().ActionLog(), "\n");
  // Others are none of those, and found to be.
  OpenWithReferenceFile(StrReplace(script, "2.50", "2.51"));
  app_.Compare();
  EXPECT_FALSE(Exact().Plan().empty());
}

// The raw line end of a literal outlives the script's own.
TEST_F(ExactLiveTest, LineEndsWithinLiteralsConverge) {
  target_.Run("create table t (a int comment 'x', b varchar(9) default 'y')");
  OpenWithReferenceFile("create table t (a int comment 'one\ntwo\r\nthree', b varchar(9) default '\\\n');");
  Sync();
  EXPECT_EQ(
      Ask("select hex(column_comment) from information_schema.columns where table_name = 't' and column_name = 'a' "
          "and table_schema = database()"),
      "6F6E650A74776F0D0A7468726565");
}

TEST_F(ExactLiveTest, ThePairsOfTheExamplesConvergeAndKeepTheirRows) {
  for (const std::string folder : {"", "stops/"}) {
    TLiveDatabase reference("exact_reference"), target("exact_target");
    RunFile(reference, VELMORA_SOURCE_DIR "/examples/live/" + folder + "reference.sql");
    RunFile(target, VELMORA_SOURCE_DIR "/examples/live/" + folder + "target.sql");
    const bool rows = folder.empty();
    const std::string before = rows ? Ask("select count(*) from `exact_target`.customers") : "";
    app_.TakeTask({reference.NewEngine(), target.NewEngine()});
    const TStringList log = Sync();
    EXPECT_THAT(log, AllOf(Contains(EndsWith(": New column phone")), Contains("Verified: 0 differences left")));
    if (rows) EXPECT_EQ(Ask("select count(*) from `exact_target`.customers"), before);
  }
}

// What the standard dialect refuses, loses or misreads; names that need their quotes; one sync makes them equal.
TEST_F(ExactLiveTest, TheWholeLanguageOfTables) {
  reference_.Run("set sql_mode = 'NO_ENGINE_SUBSTITUTION'");
  for (TLiveDatabase* database : {&reference_, &target_}) RunAll(*database, {"create sequence numbers"});
  std::size_t taken = 0;
  const auto cases = testing::TableCases("language.txt");
  for (const TTableCase& c : cases) {
    const std::string name = Format("table `t %d;'\"` ", taken);
    const bool both = Takes(reference_, "create " + name + c.wanted) && Takes(target_, "create " + name + c.there);
    if (!both) reference_.Run("drop table if exists " + name.substr(6));
    taken += both ? 1 : 0;
  }
  EXPECT_GT(taken, cases.size() * 2 / 3);
  RunAll(reference_, {"create table `p``1` (id int primary key, o int, unique key (o))",
                      "create table c (p int, o int, constraint `f;1` foreign key (p) references `p``1` (id) on delete "
                      "cascade on update set null, foreign key (o) references `p``1` (o))"});
  RunAll(target_, {"create table `p``1` (id bigint primary key)",
                   "create table c (p bigint, constraint `f;1` foreign key (p) references `p``1` (id))"});
  Open();
  Sync();
  EXPECT_EQ(Ask("select count(*) from information_schema.columns where column_default like '%`exact_reference`%' and "
                "table_schema = 'exact_target'"),
            "0")
      << "the target counts by a sequence of its own";
}

// What a server prints of expressions is what it computes by, whatever set its letters are of.
TEST_F(ExactLiveTest, LettersOfExpressionsArrive) {
  reference_.Run(
      "create table t (a varchar(9), b varchar(9) character set latin1, c varchar(20) as (concat(b, 'é')), "
      "v varbinary(9) default x'ff00', check (a <> '😀'), check (a <> '雪'))");
  Open();
  Sync();
  target_.Run("insert into t (b) values ('ü')");
  EXPECT_EQ(Ask("select concat(hex(c), ' ', hex(v)) from t"), "C3BCC3A9 FF00");
  EXPECT_FALSE(Takes(target_, "insert into t (a) values ('雪')"));
  if (Ask("select version()").starts_with("10.5")) return;  // which does not print that letter
  EXPECT_FALSE(Takes(target_, "insert into t (a) values ('😀')"));
}

// The cases of the comparison and of the plan, those of them that a server of this version takes.
class ExactCasesLiveTest : public ExactLiveTest {
 protected:
  ExactCasesLiveTest() {
    for (TLiveDatabase* database : {&reference_, &target_}) database->Run("set foreign_key_checks = 0");
  }
};

TEST_F(ExactCasesLiveTest, TablesOfTheComparison) {
  int tables = 0;
  for (const char* file : {"changes.txt", "equal.txt", "unsafe.txt"})
    for (const TTableCase& c : testing::TableCases(file)) {
      if (c.there.find("directory") != std::string::npos) continue;  // no server changes it
      const std::string name = Format("t%d ", ++tables);
      if (Takes(reference_, "create table " + name + c.wanted) && !Takes(target_, "create table " + name + c.there))
        reference_.Run("drop table " + name);
    }
  Open();
  const TStringList log = Sync();
  EXPECT_GT(log.size(), 100U);
}

TEST_F(ExactCasesLiveTest, SchemasOfThePlan) {
  std::size_t taken = 0;
  const auto cases = testing::SchemaCases("plans.txt");
  for (const testing::TSchemaCase& c : cases) {
    SCOPED_TRACE(c.name);
    for (TLiveDatabase* database : {&reference_, &target_})
      for (const char* table : {"a", "b", "c", "d", "m", "n", "o", "p", "t", "u"})
        database->Run(Format("drop table if exists `%s`", table));
    const auto takes = [](TLiveDatabase& database, const TStringList& tables) {
      return std::all_of(tables.begin(), tables.end(),
                         [&](const std::string& table) { return Takes(database, "create table " + table); });
    };
    if (!takes(reference_, c.reference) || !takes(target_, c.target)) continue;
    ++taken;
    Open();
    EXPECT_EQ(MessageOf([&] { Sync(); }), "nothing raised");
  }
  EXPECT_GT(taken, cases.size() * 2 / 3);
}

TEST_F(ExactLiveTest, PairsOfObjects) {
  for (const testing::TCaseText& c : testing::ReadCaseFile("exact/object_pairs.txt").cases) {
    SCOPED_TRACE(c.name);
    std::size_t own = 1;  // its part
    for (TLiveDatabase* database : {&reference_, &target_}) {
      for (const char* again : {"drop database %s", "create database %s", "use %s"})
        database->Run(Format(again, database->Name()));
      database->Run("set sql_mode = '', time_zone = '+00:00'");
      for (const std::size_t part : {std::size_t{0}, own}) {
        TStringList statements;
        SplitPlain('\n', c.Parts().at(part), statements);
        for (const std::string& statement : statements)
          if (!statement.empty()) database->Run(statement);
      }
      ++own;
    }
    Open();
    EXPECT_EQ(MessageOf([&] { Sync(); }), "nothing raised");
  }
}

// A file of views says nothing of tables; its own database is the one that it uses.
TEST_F(ExactLiveTest, AFileOfViewsLeavesTablesAlone) {
  RunAll(target_, {"create table t (a int, b int)", "insert into t values (1, 2)", "create view v as select a from t"});
  OpenWithReferenceFile("use app;\ncreate view v as select * from app.t;\ncreate view app.w as select b from app.v;");
  EXPECT_THAT(Sync(), AllOf(Contains(StartsWith("Tables are not compared")), Contains("New view w")));
  EXPECT_FALSE(Exact().ReferenceIsEmpty());
  EXPECT_EQ(Ask("select concat(a, (select b from w)) from t"), "12");
}

// Nobody writes names as servers print them; and whatever means something else is a difference.
TEST_F(ExactLiveTest, ViewsThatPeopleWrite) {
  std::string tables, written, changed;
  TStringList mutants;
  std::size_t count = 0;
  for (const TStringList& row : testing::CaseRows("exact/written_views.txt")) {
    if (row[0].starts_with("create table")) {
      target_.Run(row[0]);
      tables += row[0] + ";\n";
      continue;
    }
    const std::string head = Format("create view w%03d as ", ++count);
    if (!Takes(target_, head + row[0])) continue;
    written += head + row[0] + ";\n";
    std::string mutant = row[0];
    if (row.size() > 1) {
      mutants.push_back(Format("view w%03d", count));
      const std::size_t arrow = row[1].find(" => ");
      mutant.replace(mutant.find(row[1].substr(0, arrow)), arrow, row[1].substr(arrow + 4));
    }
    changed += head + mutant + ";\n";
  }
  OpenWithReferenceFile(tables + written);
  app_.Compare();
  EXPECT_TRUE(app_.Dialect().Identical()) << JoinList(app_.Dialect().ActionLog(), "\n");
  EXPECT_GE(mutants.size(), 140u);
  OpenWithReferenceFile(tables + changed);
  app_.Compare();
  TStringList found;
  for (const TObjectChange& change : Exact().ObjectChanges()) found.push_back(change.Object());
  EXPECT_EQ(found, mutants);
}

// Whatever the server's usual mode is: it is the session's that counts, also of later connections.
TEST_F(ExactLiveTest, ASessionOfItsOwn) {
  reference_.Run(
      "create table t (id int not null auto_increment primary key, a timestamp not null, `b\"c` int) "
      "comment 'back\\\\slash'");
  target_.Run("create table t (id int not null)");
  target_.Run("insert into t values (0), (5)");
  const std::string mode = Ask("select @@global.sql_mode");
  const char* more = testing::OnMySQL() ? "" : ",ORACLE,NO_KEY_OPTIONS";
  target_.Run(Format("set global sql_mode = 'ANSI_QUOTES,NO_BACKSLASH_ESCAPES,TRADITIONAL%s'", more));
  target_.Run("set global sql_quote_show_create = 0");
  Open();
  app_.Compare();
  EXPECT_THAT(Exact().ReferenceText("t"), ::testing::ContainsRegex("  `b\"c` int(\\(11\\))? DEFAULT NULL,\n"));
  EXPECT_THAT(Exact().ReferenceText("t"), HasSubstr("COMMENT='back\\\\slash'"));
  TVariant session;
  app_.connections.target->Reconnect();
  app_.connections.target->GetResultSQL("select @@sql_mode", session);
  EXPECT_THAT(VarToText(session),
              AllOf(HasSubstr("STRICT_ALL_TABLES"), Not(HasSubstr("ANSI")), Not(HasSubstr("ZERO_D"))));
  Sync();
  app_.Choose(EDialect::Standard);
  app_.Compare();
  app_.connections.reference->GetResultSQL("select @@sql_mode", session);
  EXPECT_THAT(VarToText(session), HasSubstr("ANSI_QUOTES")) << "the standard dialect leaves a session as it is";
  target_.Run("set global sql_mode = '" + mode + "'");
  target_.Run("set global sql_quote_show_create = 1");
  EXPECT_EQ(Ask("select group_concat(id order by id) from t"), "0,5") << "a new auto_increment renumbers no row";
}

TEST_F(ExactLiveTest, WhatIsNotHandledIsNamedFirstAndLeftAlone) {
  RunAll(target_, {"create table t (a int)", "create view v as select 1 as one", "create sequence s",
                   "create view clash as select 1", "create trigger g before insert on t for each row set new.a = 1",
                   "create procedure p() select 1", "create function f() returns int return 1",
                   "create event e on schedule every 1 day do select 1",
                   "create table h (a int) with system versioning", "create table hd (a int) with system versioning"});
  RunAll(reference_, {"create table t (a int, b int)", "create table clash (a int)",
                      "create table h (a int) with system versioning", "create table hd (a bigint)",
                      "create view v as select 2 as one"});
  Open();
  app_.Compare();
  const TStringList log = app_.Dialect().ActionLog();
  EXPECT_THAT(log, ElementsAreArray(OfThisServer(
                       {"Left alone: sequence s of the target", "Left alone: view clash of the target",
                        "Left alone: system-versioned table h", "Left alone: system-versioned table hd",
                        "Not the same: sequence s: only in the target",
                        "Skipped: table clash, target: there is a view of this name",
                        "Skipped: table hd, target: it is system-versioned, and differs", "t: New column b",
                        "Changed view v: query", "Obsolete trigger g", "Obsolete function f", "Obsolete procedure p",
                        "Obsolete event e", "Verified: 0 differences left in the tables that were compared",
                        "Not verified: how the server takes the script beside table clash, which is skipped",
                        "Not verified: how the server takes the script beside table hd, which is skipped"})));
  app_.RunScript(Script());
  app_.Compare();
  EXPECT_TRUE(app_.data.mtActions.Empty());
  EXPECT_FALSE(app_.Dialect().Identical()) << "two tables could not be made equal";
  EXPECT_EQ(Ask("select count(*) from information_schema.tables where table_schema = 'exact_target'"),
            testing::OnMySQL() ? "3" : "6");
}

// Of two servers' texts of the same, of triggers that fire in another order, of what waits for something else.
TEST_F(ExactLiveTest, ObjectsBecomeTheReferencesInWhateverOrderTheyStand) {
  for (TLiveDatabase* database : {&reference_, &target_})
    RunAll(*database, {"create table t (id int primary key, a int)", "create table u (id int, tid int)",
                       "create function f(p int) returns int deterministic return p + 1",
                       "create procedure same() comment 'x' select 1",
                       "create event e on schedule every 1 day disable do select 1"});
  for (const char* body : {"1", "2", "3", "4"})
    reference_.Run(Format("create trigger g%s before insert on t for each row set new.a = new.a * 5 + %s",
                          std::string(body), std::string(body)));
  for (const char* body : {"3", "2", "1"})
    target_.Run(Format("create trigger g%s before insert on t for each row set new.a = new.a * 5 + %s",
                       std::string(body), std::string(body)));
  RunAll(reference_, {"create view z as select f(a) as fa, count(*) as n from t group by f(a)",
                      "create view a as select z.n, u.id from z left join u on z.fa = u.tid and not u.id in (1, 2)",
                      "alter procedure same comment 'y' sql security invoker", "alter table t add b int",
                      "create or replace view named as select id, b from t", "set sql_mode = 'ANSI_QUOTES'",
                      "create procedure \"quoted\"(\"in\" int) select \"in\" from \"t\"",
                      "alter event e on schedule every 2 day enable comment 'often'"});
  RunAll(target_,
         {"create view z as select 1 as n", "create table gone (a int, b int)",
          "create view named as select a from gone", "create view a as select b from gone", "drop table gone"});
  Open();
  app_.Compare();
  EXPECT_EQ(Exact().DifferencesLeft(), 0) << JoinList(app_.Dialect().ActionLog(), "\n");
  app_.RunScript(Script());
  app_.Compare();
  EXPECT_TRUE(app_.Dialect().Identical()) << JoinList(app_.Dialect().ActionLog(), "\n");
  target_.Run("insert into t (id, a) values (1, 0)");
  EXPECT_EQ(Ask("select a from t"), Format("%d", ((1 * 5 + 2) * 5 + 3) * 5 + 4));
  EXPECT_EQ(Ask("select count(*) from information_schema.routines where routine_schema = 'exact_target' and "
                "routine_name = 'quoted' and sql_mode like '%ANSI_QUOTES%'"),
            "1");
}

TEST_F(ExactLiveTest, WhatALoginMayNotSeeIsNeverObsolete) {
  RunAll(target_, {"create table t (a int, b int)", "create view v as select b from t",
                   "create trigger g before insert on t for each row set new.a = new.b",
                   "create procedure p() select 1", "create event e on schedule every 1 day disable do select 1"});
  RunAll(reference_, {"create table t (a int)", "create view v as select 1 as b",
                      "create trigger g before insert on t for each row set new.a = 2", "drop user if exists half",
                      "create user half", "grant select, show view on exact_reference.* to half"});
  app_.TakeTask({reference_.NewEngine("half"), target_.NewEngine()});
  app_.Compare();
  const TStringList log = app_.Dialect().ActionLog();
  for (const char* object : {"trigger g", "procedure p", "event e"})
    EXPECT_THAT(log, Contains(Format("Not the same: %s: not read: the reference may have it and does not show all of "
                                     "its kind",
                                     std::string(object))));
  EXPECT_THAT(log, Contains("t: b is named by trigger g"));
  EXPECT_THAT(log, Contains("Changed view v: query"));
  reference_.Run("grant trigger, event, execute on exact_reference.* to half");
  app_.Compare();
  EXPECT_THAT(app_.Dialect().ActionLog(), AllOf(Contains("Changed trigger g: body"), Contains("Obsolete procedure p"),
                                                Contains("Obsolete event e")));
  reference_.Run("drop user half");
}

// The same objects in databases of other names, by other definers; then as a login sees them that may not read them.
TEST_F(ExactLiveTest, OtherObjectsThatAreTheSameAndThoseThatNobodyMayRead) {
  for (TLiveDatabase* database : {&reference_, &target_})
    RunAll(*database,
           {"create table t (a int)", "create sequence s", "create sql security invoker view v as select t.a from t",
            "create view w as select v.a, s.a as b from v join t s on v.a = s.a where v.a > 1",
            "create trigger g before insert on t for each row set new.a = 1",
            "create procedure p(in x varchar(9)) comment 'c' begin select x; end",
            "create function f() returns varchar(9) deterministic return 'it''s'",
            "create event e on schedule every 1 day starts '2030-01-01' disable do insert into t values (1)"});
  Open();
  app_.Compare();
  EXPECT_TRUE(app_.Dialect().Identical()) << JoinList(app_.Dialect().ActionLog(), "\n");

  RunAll(target_,
         {"drop user if exists blind", "create user blind", "grant select, execute on exact_reference.* to blind"});
  app_.TakeTask({reference_.NewEngine("blind"), target_.NewEngine()});
  app_.Compare();
  EXPECT_FALSE(app_.Dialect().Identical());
  EXPECT_TRUE(app_.Dialect().TablesIdentical());
  EXPECT_THAT(app_.Dialect().ActionLog(),
              AllOf(Contains("Not the same: procedure p: not read"), Contains("Not the same: view v: not read")));
  target_.Run("drop user blind");
}

TEST_F(ExactLiveTest, LibrariesAreComparedAndLeftAlone) {
  if (!testing::OnMySQL()) GTEST_SKIP() << "a server without libraries";
  for (TLiveDatabase* database : {&reference_, &target_})
    RunAll(*database, {"create library l language javascript as $$ export function f() { return 1 } $$",
                       "create function f() returns int language javascript using (l) as $$ return l.f() $$"});
  Open();
  app_.Compare();
  EXPECT_TRUE(app_.Dialect().Identical()) << JoinList(app_.Dialect().ActionLog(), "\n");
  RunAll(target_, {"drop function f", "drop library l", "create library l language javascript as $$ let a = 2 $$"});
  app_.Compare();
  EXPECT_THAT(app_.Dialect().ActionLog(),
              AllOf(Contains("Not the same: library l: differs"), Contains("New function f")));
}

// Each case is a table of its own; the answer is of the whole script.
TEST_F(ExactLiveTest, RowsInTheWayAreCountedBeforeTheRun) {
  for (TLiveDatabase* database : {&reference_, &target_}) database->Run("create table p (id int primary key, c0 int)");
  RunAll(reference_, {"create table fresh (id int primary key)", "create table other (a int, x int primary key)"});
  RunAll(target_, {"create table other (a int)", "insert into p (id) values (1), (2)"});
  for (TLiveDatabase* database : {&reference_, &target_})
    RunAll(*database,
           {"create table words (w varchar(20) primary key, d decimal(5,1), n bit(4), unique key (d), unique key (n))",
            "insert into words values ('abc', 1.5, 0)"});
  std::vector<TTableCase> cases;
  std::size_t refused = 0;
  for (const TTableCase& c : testing::TableCases("rows_in_the_way.txt")) {
    try {
      reference_.Run(Format("create table t%02d %s", cases.size(), c.wanted));
      target_.Run(Format("create table t%02d %s", cases.size(), c.there));
      target_.Run(Format("insert into t%02d values %s", cases.size(), c.rows));
      cases.push_back(c);
    } catch (const EMySqlException&) {  // the language of another server
      reference_.Run(Format("drop table if exists t%02d", cases.size()));
      target_.Run(Format("drop table if exists t%02d", cases.size()));
      ++refused;
    }
  }
  EXPECT_LT(refused, cases.size() / 4);
  Open();
  app_.Compare();
  const std::vector<TRowFinding> findings = app_.Dialect().CheckRows(30);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(cases[i].wanted);
    const std::string table = Format("t%02d", i);
    std::string found;
    for (const TRowFinding& finding : findings)
      if (finding.text.starts_with(table)) found += StrReplace(finding.text, table + "_ibfk_1", "f");
    EXPECT_EQ(found.empty(), cases[i].told.empty()) << found;
    if (!found.empty()) EXPECT_THAT(found, StartsWith(table + ": " + cases[i].told));
  }
  for (const TRowFinding& finding : findings)
    EXPECT_EQ(finding.checked, finding.text.find("not checked") == std::string::npos) << finding.text;
}

// By the names that they have before the run.
TEST_F(ExactLiveTest, RowsOfRenamedTablesAreCounted) {
  RunAll(reference_, {"create table p (id int primary key)",
                      "create table client (ident int not null, pid int, unique key u (ident), foreign key f (pid) "
                      "references p (id))"});
  RunAll(target_, {"create table p (id int primary key)", "create table customer (id int, pid int, key f (pid))",
                   "insert into customer values (1, 7), (1, null), (null, null)"});
  Open();
  app_.Take({.exact = ReadExactWishes("rename customer=client\nrename client.id=ident")});
  app_.Compare();
  std::string found;
  for (const TRowFinding& finding : app_.Dialect().CheckRows(30)) found += finding.text + "\n";
  EXPECT_THAT(found,
              AllOf(HasSubstr("customer: column id: 1 row with NULL"), HasSubstr("customer: unique key u: 2 rows"),
                    HasSubstr("without the row referred to"), Not(HasSubstr("not checked"))));
}

// A server that copies a table for a new foreign key looks at those that were there.
TEST_F(ExactLiveTest, RowsThatBreakAForeignKeyThatStaysAreTold) {
  for (TLiveDatabase* database : {&reference_, &target_})
    RunAll(*database, {"create table p (id int primary key)",
                       "create table t (a int, b int, constraint kept foreign key (a) references p (id))"});
  reference_.Run("alter table t add constraint fresh foreign key (b) references p (id)");
  RunAll(target_, {"set foreign_key_checks = 0", "insert into t values (7, null)"});
  Open();
  app_.Compare();
  const std::vector<TRowFinding> findings = app_.Dialect().CheckRows(30);
  EXPECT_TRUE(Exact().Plan().back().checks_on) << "the table that it refers to is the same on both sides";
  EXPECT_EQ(findings.empty(), !testing::OnMySQL());
  EXPECT_EQ(findings.empty(), MessageOf([&] { app_.RunScript(Script()); }) == "nothing raised");
  for (const TRowFinding& finding : findings)
    EXPECT_THAT(finding.text, StartsWith("t: foreign key kept: 1 row without the row referred to; this server"));
}

// Each table is refused by the rule under which it is told, and by no other.
TEST_F(ExactLiveTest, TablesThatAreWithoutTheirKeyForAWhileAreTold) {
  if (!testing::OnMySQL()) GTEST_SKIP() << "a server without rules about primary keys";
  RunAll(reference_, {"create table late (a int primary key, b int) partition by hash (a)",
                      "create table gone (a int not null, b int) partition by hash (a)",
                      "create table other (b int not null, unique key k (b)) partition by key (b)",
                      "set sql_generate_invisible_primary_key = 1",
                      "create table hidden (a varchar(9) not null, unique key k (a(3)) invisible)"});
  RunAll(target_, {"create table late (a int not null, b int) partition by hash (b)",
                   "create table gone (a int not null, b int primary key) partition by hash (b)",
                   "create table other (a int primary key) partition by hash (a)",
                   "create table hidden (a varchar(9) not null)"});
  Open();
  for (const char* rule : {"sql_require_primary_key", "sql_generate_invisible_primary_key"}) {
    target_.Run(Format("set global %s = 1", rule));
    for (const std::string table : {"late", "gone", "other", "hidden"}) {
      app_.Take({.exact = ReadExactWishes("only " + table)});
      app_.Compare();
      EXPECT_EQ(app_.Dialect().CheckRows(30).empty(), MessageOf([&] { Exact().VerifyOnServer(); }) == "nothing raised")
          << rule << " " << table;
    }
    target_.Run(Format("set global %s = 0", rule));
  }
}

TEST_F(ExactLiveTest, TheServerEndsALookAtRowsThatTakesTooLong) {
  reference_.Run("create table t (a int, unique key k (a))");
  target_.Run("create table t (a int)");
  Open();
  app_.Compare();
  target_.Run("lock tables t write");
  const std::vector<TRowFinding> findings = app_.Dialect().CheckRows(1);
  target_.Run("unlock tables");
  ASSERT_THAT(findings, SizeIs(1));
  EXPECT_FALSE(findings[0].checked);
  EXPECT_THAT(findings[0].text, HasSubstr("not checked: the server was not done within 1 second "));
  EXPECT_THAT(app_.Dialect().CheckRows(0), IsEmpty());
}

TEST_F(ExactLiveTest, ATableThatCannotBeReadIsSkippedAndTheOthersGoOn) {
  target_.Run("create table bad (a int)");
  target_.Run("create table good (a int)");
  OpenWithReferenceFile("create table bad (a int, key k (a);\ncreate table good (a int, b int);\n");
  app_.Compare();
  EXPECT_THAT(Exact().Skipped(), SizeIs(1));
  EXPECT_EQ(Exact().Skipped()[0].table, "bad");
  EXPECT_EQ(Exact().Skipped()[0].side, "reference");
  EXPECT_THAT(Exact().Skipped()[0].reason, HasSubstr("reference.sql: line 1: "));
  EXPECT_EQ(app_.data.mtActions.Count(), 1u);
  app_.RunScript(Script());
  app_.Compare();
  EXPECT_FALSE(app_.Dialect().Identical());
  EXPECT_TRUE(app_.data.mtActions.Empty());
}

TEST_F(ExactLiveTest, StrikingAnActionOutRewritesItsStatement) {
  reference_.Run("create table t (a int, b int, c int)");
  target_.Run("create table t (a int)");
  Open();
  app_.Compare();
  const TActionNode& table = app_.tree.Top().front();
  EXPECT_EQ(table.children.size(), 2u);
  DeleteAction(&table.children.front(), app_.tree, app_.data, [this] { app_.Dialect().GenerateScript(); });
  EXPECT_THAT(editor_.Text(), AllOf(HasSubstr("add column `c`"), Not(HasSubstr("`b`"))));
  EXPECT_EQ(Exact().VerifyOnServer(), 1) << "what was struck out is left";
}

// --- The proof on the server

// Does something to the scratch database's connection, or ends the work, at the pump of that number.
class TMeddlingHost final : public THost {
 public:
  TMeddlingHost(int when, std::function<void()> meddle) : when_(when), meddle_(std::move(meddle)) {}
  void ProcessMessages() override {
    if (++pumped_ == when_) meddle_();
  }

 private:
  int when_;
  int pumped_ = 0;
  std::function<void()> meddle_;
};

TEST_F(ExactLiveTest, TheScratchDatabaseIsRemovedWhateverHappens) {
  target_.Run("create table t (a int)");
  target_.Run("create table p (a int primary key)");
  target_.Run("create table u (a int references p (a))");
  OpenWithReferenceFile("create table t (a nosuchtype(3));\n" +
                        testing::Answer(target_.Connection(), "show create table p") + ";\n" +
                        testing::Answer(target_.Connection(), "show create table u") + ";\n");
  app_.Compare();
  EXPECT_THAT(MessageOf([&] { Exact().VerifyOnServer(); }),
              StartsWith("Verifying on the server: statement 1 of 1 fails: "));
  EXPECT_EQ(ScratchDatabases(), "0");

  const auto kill = [this] {
    target_.Run("kill " + Ask("select id from information_schema.processlist where db like 'velmora%'"));
  };
  const auto cancel = [] { RaiseError("Cancelled"); };
  for (const std::function<void()>& meddle : {std::function<void()>(kill), std::function<void()>(cancel)}) {
    TMeddlingHost host(4, meddle);
    const THostGuard guard(host);
    EXPECT_NE(MessageOf([&] { Exact().VerifyOnServer(); }), "nothing raised");
    EXPECT_EQ(ScratchDatabases(), "0");
  }
  const auto fail_under_lock = [this] {
    TScratchDatabase scratch(*app_.connections.target, {});
    scratch.RunWithin([&] {
      scratch.Run("create table t (a int)");
      scratch.Run("lock tables t write");
      RaiseError("failed");
    });
  };
  EXPECT_EQ(MessageOf(fail_under_lock), "failed");
  EXPECT_EQ(ScratchDatabases(), "0");
  EXPECT_EQ(Ask("select count(*) from information_schema.columns where table_schema = 'exact_target'"), "3");
}

// A dump of the other product is compared in the target's words once it is said of which server it is.
TEST_F(ExactLiveTest, AFileOfAnotherServer) {
  if (testing::OnMySQL()) GTEST_SKIP() << "the file is one of MySQL";
  if (Ask("select version()").starts_with("10.5")) GTEST_SKIP() << "a server without keys that queries do not use";
  OpenWithReferenceFile(
      "CREATE TABLE `t` (\n  `a` int NOT NULL,\n  `j` json DEFAULT NULL,\n  `s` varchar(9) DEFAULT (concat(_utf8mb4'x',"
      "_utf8mb4'y')) /*!80023 INVISIBLE */,\n  PRIMARY KEY (`a`),\n  KEY `k` (`s`) /*!80000 INVISIBLE */\n) "
      "ENGINE=InnoDB "
      "DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;\n"
      "CREATE TABLE `n` (\n  `a` int NOT NULL,\n  CONSTRAINT `c` CHECK ((`a` > 0)) /*!80016 NOT ENFORCED */\n) "
      "ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;\n"
      "CREATE VIEW `v` AS select regexp_like(`t`.`s`,'^x') AS `r` from `t`;\n"
      "CREATE VIEW `w` AS select `n`.`a` AS `a` from `n`;\n");
  TComparisonWishes wishes;
  wishes.exact.reference_version = "mysql 9.7.4";
  app_.Take(wishes);
  for (const bool again : {false, true}) {
    app_.Compare();
    const TStringList log = app_.Dialect().ActionLog();
    EXPECT_THAT(log, AllOf(Contains("Not the same: view w: left alone: it names table n, which is skipped"),
                           Contains(AllOf(StartsWith("Skipped: table n, reference: "), HasSubstr("not enforced")))));
    EXPECT_EQ(Exact().Plan().empty(), again) << JoinList(log, "\n");
    if (!again) app_.RunScript(Script());
  }
  EXPECT_THAT(Ask("show create table t"), AllOf(HasSubstr("json_valid(`j`)"), HasSubstr("IGNORED")));
}

// A view over a table that is gone is printed, and refused elsewhere; so are those over it, while all else is made.
TEST_F(ExactLiveTest, WhatTheServerRefusesOfObjectsIsLeftAlone) {
  RunAll(reference_, {"create table t (a int)", "create table u (a int)", "create view v as select a from u",
                      "create view w as select a from t where exists (select 1 from v)", "drop table u",
                      "create trigger g before insert on t for each row set new.a = 2"});
  RunAll(target_, {"create table t (a int)", "create trigger g before insert on t for each row set new.a = 1"});
  Open();
  app_.Compare();
  EXPECT_EQ(Exact().VerifyOnServer(), 0);
  TStringList told;
  for (const TObjectDifference& object : Exact().Objects()) told.push_back(object.name + " " + object.difference);
  EXPECT_THAT(told, ElementsAre(StartsWith("v left alone: the target's server refuses it: "),
                                StartsWith("w left alone: the target's server refuses it: ")));
  app_.RunScript(Script());
  target_.Run("insert into t values (0)");
  EXPECT_EQ(Ask("select a from t"), "2");
  EXPECT_EQ(Ask("select count(*) from information_schema.views where table_schema = 'exact_target'"), "0");
}

// What runs as an account that is gone takes the views along that name it; what nobody follows is there all the same.
TEST_F(ExactLiveTest, ViewsOfWhatTheTargetHasAndCannotRunAreToldBefore) {
  for (TLiveDatabase* database : {&reference_, &target_}) {
    const std::string definer = database == &target_ ? "definer = 'no one'@'nowhere' " : "";
    for (const std::string text : {"function f() returns int deterministic return 1", "view n as select 1 as a",
                                   "function g() returns int deterministic sql security invoker return 1"})
      database->Run("create " + definer + text);
    RunAll(*database, {"set sql_mode = 'NO_BACKSLASH_ESCAPES'",
                       "create function unread() returns int deterministic return length('\\')", "set sql_mode = ''"});
  }
  const std::map<std::string, std::string> views = {
      {"v", "select (select exact_reference.f()) as a"}, {"w", "select a from n"}, {"x", "select a from v"}};
  for (const auto& [name, query] : views) reference_.Run("create view " + name + " as " + query);
  RunAll(reference_, {"create view y as select g() as f", "create view z as select unread() as a"});
  Open();
  app_.Compare();
  EXPECT_EQ(Exact().VerifyOnServer(), 0);
  TStringList told;
  for (const TObjectDifference& object : Exact().Objects()) told.push_back(object.name + " " + object.difference);
  const std::string gone = "whose definer no one@nowhere has no account on the target";
  EXPECT_THAT(told, ::testing::UnorderedElementsAre(StartsWith("unread not followed"),
                                                    "v left alone: it names function f, " + gone,
                                                    "w left alone: it names view n, " + gone,
                                                    "x left alone: it names view v, which is left alone"));
  app_.RunScript(Script());
  for (const auto& [name, query] : views)
    EXPECT_FALSE(Takes(target_, "create view " + name + " as " + StrReplace(query, "exact_reference.", ""))) << query;
  EXPECT_EQ(Ask("select y.f + z.a from y join z"), "2");
}

// The copy would lack what the script meets on the target.
TEST_F(ExactLiveTest, ATableThatCannotBeReadMakesNoProof) {
  for (TLiveDatabase* database : {&reference_, &target_}) {
    database->Run("create table bad (a int primary key) engine=MyISAM");
    database->Run("create table t (a int)");
  }
  reference_.Run("alter table t add b int");
  target_.Run("flush tables");
  const std::string definition = Ask("select @@datadir") + "exact_target/bad." + (testing::OnMySQL() ? "MYI" : "frm");
  const std::string whole = ReadFileText(definition);
  WriteFileText(definition, "no table");
  Open();
  app_.Compare();
  EXPECT_THAT(app_.Dialect().ActionLog(), Contains("Verified: 0 differences left in the tables that were compared"));
  EXPECT_THAT(MessageOf([&] { Exact().VerifyOnServer(); }),
              StartsWith("Verifying on the server: table bad of the target could not be read, and a copy without it "
                         "proves nothing: "));
  EXPECT_EQ(ScratchDatabases(), "0");
  WriteFileText(definition, whole);
}

TEST_F(ExactLiveTest, ARunThatFailsPutsForeignKeyChecksBack) {
  Open();
  app_.Compare();
  EXPECT_NE(
      MessageOf([&] { app_.RunScript("set foreign_key_checks = 0; -- a;b\ncreate table t (a int);\nbad 'x;y';"); }),
      "nothing raised");
  EXPECT_EQ(app_.RunReport().statements.size(), 3u);
  EXPECT_EQ(editor_.caret(), app_.RunReport().statements[2].start);
  TVariant checks;
  app_.connections.target->GetResultSQL("select @@foreign_key_checks", checks);
  EXPECT_EQ(VarToText(checks), "1");
}

TEST_F(ExactLiveTest, ASideThatGivesNoTextsAndALostServerEndTheComparison) {
  // More tables than the server is asked for at once.
  for (int i = 0; i < 200; ++i) target_.Run("create table t" + std::to_string(i) + " (a int)");
  Open();
  app_.Compare();
  TMeddlingHost host(1, [this] {
    target_.Run("kill " + Ask("select max(id) from information_schema.processlist where db = 'exact_target'"));
  });
  const THostGuard guard(host);
  EXPECT_NE(MessageOf([&] { app_.Compare(); }), "nothing raised");
  EXPECT_TRUE(app_.Dialect().TargetLost());
  EXPECT_NE(app_.Dialect().TableUnderWay(), "");
}

}  // namespace
}  // namespace velmora
