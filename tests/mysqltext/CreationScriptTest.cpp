// SPDX-License-Identifier: GPL-3.0-or-later
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

// All that a script holds, as tests/data/creation has it.
TStringList Outcome(const TCreationScript& script) {
  TStringList lines = Recorded(script);
  for (const TOtherObject& other : script.OtherObjects())
    lines.push_back("[" + other.kind + " " + other.name + "] " + other.text);
  for (const TScriptWarning& warning : script.Warnings())
    lines.push_back((warning.verbose_only ? "? " : "! ") + warning.Message());
  return lines;
}

// "view v {mode} <collation> text"
std::string Shown(const TOtherObject& object) {
  const TObjectContext& context = object.context;
  std::string line = object.kind + " " + object.name + " ";
  if (!object.unread.empty()) return line + "! " + object.unread;
  if (object.order > 0) line += std::to_string(object.order) + " ";
  if (context.sql_mode) line += "{" + *context.sql_mode + "} ";
  EXPECT_EQ(context.of_client, !context.sql_mode);
  return line + (context.collation.empty() ? "" : "<" + context.collation + "> ") + object.text;
}

TEST(CreationScript, AppliesWhatIsSaidOfObjects) {
  for (const TCaseText& one : ReadCaseFile("creation/objects.txt").cases) {
    const TCreationScript script{std::string(one.Parts().at(0))};
    TStringList lines;
    for (const TOtherObject& object : script.OtherObjects()) lines.push_back(Shown(object));
    EXPECT_EQ(JoinList(lines, "\n"), one.Parts().at(1)) << one.name;
  }
}

// As dumps write it: what was is kept first.
TEST(CreationScript, KnowsWhatObjectsWereMadeUnder) {
  const TCreationScript script(std::string(R"(
SET SQL_MODE='NO_AUTO_VALUE_ON_ZERO';
create procedure p() select 1;
/*!50003 SET @saved_sql_mode       = @@sql_mode */ ;
/*!50003 SET @saved_col_connection = @@collation_connection */ ;
/*!50003 SET sql_mode              = 'ANSI_QUOTES,STRICT_ALL_TABLES' */ ;
/*!50003 SET collation_connection  = latin1_bin */ ;
DELIMITER ;;
/*!50003 CREATE*/ /*!50017 DEFINER=`a`@`b`*/ /*!50003 TRIGGER `g` BEFORE INSERT ON `t` FOR EACH ROW begin end
*/;;
DELIMITER ;
/*!50003 SET sql_mode              = @saved_sql_mode */ ;
create procedure q() select 2;
/*!50001 CREATE VIEW `v` AS SELECT
 1 AS `a`,
 NULL AS `b`*/;
)") + "CREATE VIEW `w` AS SELECT \r\n 1 AS `a`;\r\n");
  std::string found;
  for (const TOtherObject& object : script.OtherObjects())
    found += object.name + ":" + object.context.sql_mode.value_or("-") + ":" + object.context.collation + ":" +
             (object.text.empty() ? "nothing" : "text") + " ";
  EXPECT_EQ(
      found,
      "p:NO_AUTO_VALUE_ON_ZERO::text g:ANSI_QUOTES,STRICT_ALL_TABLES:latin1_bin:text "
      "q:NO_AUTO_VALUE_ON_ZERO:latin1_bin:text v:-:latin1_bin:nothing w:NO_AUTO_VALUE_ON_ZERO:latin1_bin:nothing ");
}

TEST(CreationScript, TakesTablesAndTellsTheRest) {
  for (const TCaseText& one : ReadCaseFile("creation/tables.txt").cases) {
    const TStringList parts = one.Parts();
    for (const char* line_end : {"\n", "\r\n"}) {
      const TCreationScript script(StrReplace(parts.at(0), "\n", line_end));
      EXPECT_EQ(JoinList(Outcome(script), line_end), StrReplace(parts.at(1), "\n", line_end)) << one.name;
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
      {AlterObject, {"alter algorithm = merge view v as select 1", "alter definer = a@b event e disable"}},
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

TEST(CreationScript, FilesChangeWhatEarlierOnesMake) {
  const TScratchFolder folder;
  WriteFileText(folder / "a.sql",
                "set sql_mode = ''; create event e on schedule every 1 day do select 1;\n"
                "create trigger g before insert on t for each row set @v = 1;");
  WriteFileText(folder / "b.sql", "drop table if exists t; rename table t to u; alter event e rename to f;");
  WriteFileText(folder / "c.sql", "create procedure p() select 1;");
  std::string found;
  const auto script = TCreationScript::Load(folder.Path());
  for (const TOtherObject& object : script->OtherObjects()) found += Shown(object) + "\n";
  EXPECT_EQ(found,
            "event f {} create event `f` on schedule every 1 day do select 1\n"
            "trigger g 1 {} create trigger g before insert on `u` for each row set @v = 1\n"
            "procedure p create procedure p() select 1\n");
}

}  // namespace
}  // namespace velmora
