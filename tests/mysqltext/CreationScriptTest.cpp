#include "mysqltext/CreationScript.h"

#include <gtest/gtest.h>

#include "mysqltext/StatementHead.h"
#include "support/CaseFile.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {
namespace {

using testing::MessageOf;
using testing::ReadCaseFile;
using testing::TCaseText;
using testing::TScratchFolder;

// "name=text" of each recorded table.
TStringList Recorded(const TCreationScript& script) {
  TStringList tables;
  for (const TCreationText& table : script.Tables())
    tables.push_back(std::string(table.name) + "=" + std::string(table.text));
  return tables;
}

TStringList Messages(const TCreationScript& script, bool verbose) {
  TStringList messages;
  for (const TScriptWarning& warning : script.Warnings())
    if (verbose || !warning.verbose_only) messages.push_back(warning.Message());
  return messages;
}

TEST(CreationScript, RecordsTables) {
  for (const TCaseText& one : ReadCaseFile("creation/tables.txt").cases) {
    const TStringList parts = one.Parts();
    for (const char* line_end : {"\n", "\r\n"}) {
      const TCreationScript script(StrReplace(parts.at(0), "\n", line_end));
      EXPECT_EQ(JoinList(Recorded(script), line_end), StrReplace(parts.at(1), "\n", line_end)) << one.name;
    }
  }
}

TEST(CreationScript, FindsIgnoringCase) {
  const TCreationScript script("create table Abc (a int); create table `d e` (b int);");
  ASSERT_NE(script.Find("aBC"), nullptr);
  EXPECT_EQ(script.Find("aBC")->name, "Abc");
  EXPECT_EQ(script.Find("D E")->text, "create table `d e` (b int)");
  EXPECT_EQ(script.Find("ab"), nullptr);
  EXPECT_EQ(script.Find(""), nullptr);
}

TEST(CreationScript, KnowsWhatAStatementIs) {
  using enum EStatementKind;
  const std::pair<EStatementKind, TStringList> kStatements[] = {
      {AlterTable, {"Alter Table t add a int", "alter ignore table t add a int"}},
      {Setting, {"alter database d", "set session sql_mode = 'ansi_quotes'"}},
      {Dynamic, {"\\. other.sql"}},
      {CreateIndex, {"create index i on t (a)", "create UNIQUE index i on t", "create fulltext index i on t"}},
      {Object, {"create trigger x", "create or replace view t"}},
      {Rename, {"rename table a to b"}},
      {Drop, {"drop table t", "drop/**/database d"}},
      {ReplaceTable, {"create or replace table t"}},
      {CreateTable, {"create table d.t (a int)"}},
      {Other, {"set names utf8", "dropped", "drop2 x", "create table1 t", "create table d. (a int)", ""}},
  };
  for (const auto& [kind, statements] : kStatements)
    for (const std::string& statement : statements) EXPECT_EQ(ReadStatementHead(statement).kind, kind) << statement;
  for (const auto& [keys, as_is] : {std::pair("disable keys", true), {"enable keys", true}, {"enable", false}})
    EXPECT_EQ(ReadStatementHead(std::string("alter table t ") + keys).leaves_as_is, as_is) << keys;
}

TEST(CreationScript, WarnsOfWhatMattersAndTellsTheRest) {
  const TCreationScript script(
      "set names utf8;\n"
      "drop table if exists t;\n"
      "create table t (a int);\n"
      "insert into t values (1);\n"
      "INSERT INTO t values (2);\n"
      "alter table t add b int;\n"
      "alter table t\n add c int;\n"
      "create table T (a int);\n");
  EXPECT_EQ(Messages(script, false),
            (TStringList{"statements passed over that may change the structure: alter table (2)",
                         "line 9: table T is created again, in place of the one of line 3"}));
  EXPECT_EQ(Messages(script, true),
            (TStringList{"statements passed over that may change the structure: alter table (2)",
                         "line 1: passed over: set names utf8", "line 2: passed over: drop table if exists t",
                         "line 4: passed over: insert into t values (1) (and 1 more like it)",
                         "line 6: passed over: alter table t add b int", "line 7: passed over: alter table t...",
                         "line 9: table T is created again, in place of the one of line 3"}));
}

TEST(CreationScript, ADumpThatIsCutAnywhereIsAnError) {
  const std::string_view openings[] = {"-- MySQL dump 10.13  Distrib 8\n--\n",
                                       "/*M!999999\\- enable the sandbox mode */ \n-- MariaDB dump 10.19\n"};
  for (const std::string_view opening : openings) {
    const std::string whole = std::string(opening) + "create table `a` (`b` int comment 'it''s');\n-- Dump completed";
    for (std::size_t size = 1; size < whole.size(); ++size)
      EXPECT_NE(MessageOf([&] { TCreationScript script(whole.substr(0, size)); }), "nothing raised")
          << whole.substr(0, size);
    EXPECT_EQ(TCreationScript(whole).Tables().size(), 1u);
    EXPECT_EQ(TCreationScript(whole + " on 2026-01-01\n").Tables().size(), 1u);
    const std::string cut = whole.substr(0, whole.rfind('\n'));
    EXPECT_EQ(TCreationScript(cut, {"", true}).Tables().size(), 1u);
    EXPECT_NE(MessageOf([&] { TCreationScript script(whole + "\n" + cut); }), "nothing raised");
  }
}

TEST(CreationScript, ReadsLinesThatEndInCarriageReturnsAlone) {
  EXPECT_EQ(Recorded(TCreationScript("-- a dump\r# of old\rcreate table t (a int);\r")),
            (TStringList{"t=create table t (a int)"}));
}

TEST(CreationScript, TakesOneOfSeveralDatabases) {
  const std::string text =
      "create database x; use x; create table t (a int); create table y.u (b int); use `y`; create table t (c int);";
  EXPECT_EQ(Recorded(TCreationScript(text, {"x", false})), (TStringList{"t=create table t (a int)"}));
  EXPECT_EQ(Recorded(TCreationScript(text, {"y", false})),
            (TStringList{"u=create table u (b int)", "t=create table t (c int)"}));
  EXPECT_EQ(MessageOf([&] { TCreationScript script(text); }),
            "holds several databases: x, y; name one as in FILE.sql#x");
  EXPECT_EQ(MessageOf([&] { TCreationScript script(text, {"z", false}); }), "holds no database z; there is: x, y");
}

TEST(CreationScript, NamesWhatIsNoTable) {
  const TCreationScript script(
      "/*!50001 CREATE TABLE `v` (`a` int) */;\n/*!50001 DROP TABLE IF EXISTS `v`*/;\n"
      "/*!50001 CREATE ALGORITHM=UNDEFINED */\n/*!50013 DEFINER=`root`@`localhost` SQL SECURITY DEFINER */\n"
      "/*!50001 VIEW `v` AS select 1 AS `a` */;\n"
      "delimiter ;;\n/*!50003 CREATE*/ /*!50017 DEFINER=`r`@`%`*/ /*!50003 TRIGGER tr before insert on t for each row "
      "begin set new.a = ';'; end */;;\ncreate definer=`r`@`%` procedure p() begin select 1; end;;\ndelimiter ;\n"
      "create event e on schedule every 1 day do select 1; create function gone() returns int return 1;\n"
      "drop function if exists gone; create table t (a int);");
  TStringList names;
  for (const TOtherObject& object : script.OtherObjects()) names.push_back(object.kind + " " + object.name);
  EXPECT_EQ(names, (TStringList{"view v", "trigger tr", "procedure p", "event e"}));
  EXPECT_EQ(
      script.OtherObjects()[0].text,
      "CREATE ALGORITHM=UNDEFINED \n DEFINER=`root`@`localhost` SQL SECURITY DEFINER \n VIEW `v` AS select 1 AS `a`");
  EXPECT_EQ(Recorded(script), (TStringList{"t=create table t (a int)"}));
}

TEST(CreationScript, WarnsOfNoTables) {
  const TStringList warning{"no create table statement: taken as an empty database"};
  EXPECT_EQ(Messages(TCreationScript(""), true), warning);
  EXPECT_EQ(Messages(TCreationScript("-- nothing\n/* here */;"), true), warning);
}

TEST(CreationScript, ShowsLongStatementsShortened) {
  const TCreationScript script("insert " + std::string(300, 'x'));
  EXPECT_EQ(script.Warnings().back().text, "passed over: insert " + std::string(53, 'x') + "...");
}

TEST(CreationScript, LoadsFiles) {
  const TScratchFolder folder;
  const std::string path = folder / "a.sql";
  WriteFileText(path,
                "\xEF\xBB\xBF"
                "create table t (a int);\n");
  EXPECT_EQ(Recorded(*TCreationScript::Load(path)), (TStringList{"t=create table t (a int)"}));
  WriteFileText(path, "create table t (a int);\ninsert into t values ('x);");
  EXPECT_EQ(MessageOf([&] { TCreationScript::Load(path); }), path + ": line 2: unclosed ' quote");
  const std::string missing = folder / "b.sql";
  EXPECT_EQ(MessageOf([&] { TCreationScript::Load(missing); }),
            "Cannot read " + missing + ": No such file or directory");
}

}  // namespace
}  // namespace velmora
