// The options of the exact dialect over files of creation texts.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/CompanionRun.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::TAnswer;
using TJson = nlohmann::ordered_json;

constexpr char kReference[] =
    "CREATE TABLE `items` (\n  `id` int NOT NULL AUTO_INCREMENT,\n  `kind` enum('a','b') DEFAULT NULL,\n"
    "  PRIMARY KEY (`id`),\n  KEY `ix` (`kind`)\n) ENGINE=InnoDB AUTO_INCREMENT=7 DEFAULT CHARSET=utf8mb4;\n"
    "CREATE TABLE `new` (\n  `a` int(11) DEFAULT NULL\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;\n";
constexpr char kTarget[] =
    "CREATE TABLE `items` (\n  `id` int(11) NOT NULL AUTO_INCREMENT,\n  `kind` enum('a','b','c') DEFAULT NULL,\n"
    "  PRIMARY KEY (`id`)\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;\n";

class ExactCommandTest : public ::testing::Test {
 protected:
  ExactCommandTest() {
    WriteFileText(a_, kReference);
    WriteFileText(b_, kTarget);
    WriteFileText(none_, "");
  }
  static TAnswer Run(std::vector<std::string> arguments) { return testing::RunInProcess(arguments); }

  testing::TScratchFolder folder_;
  const std::string a_ = folder_ / "a.sql";
  const std::string b_ = folder_ / "b.sql";
  const std::string none_ = folder_ / "none.sql";
};

TEST_F(ExactCommandTest, CompareAsTextAndAsJson) {
  const TAnswer text = Run({"compare", a_, b_, "--dialect", "exact"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.out, StartsWith("~ items\n    ~ Changed column kind\n        ! unsafe: "));
  EXPECT_THAT(text.out, HasSubstr("\n    + New index ix\n+ New table new\n\n3 differences in 2 tables\n"
                                  "Verified: 0 differences left\n"));
  EXPECT_EQ(text.err, "");

  const TJson json = TJson::parse(Run({"compare", a_, b_, "--dialect", "exact", "--format", "json"}).out);
  std::vector<std::string> keys;
  for (const auto& entry : json.items()) keys.push_back(entry.key());
  EXPECT_THAT(keys, ::testing::ElementsAre("identical", "actions", "log", "skipped", "not_followed", "objects",
                                           "verified", "verified_on_server", "error"));
  EXPECT_TRUE(json["actions"][0]["unsafe"].is_string());
  EXPECT_TRUE(json["actions"][1]["unsafe"].is_null());
  EXPECT_EQ(json["verified"], 0);
  EXPECT_TRUE(json["verified_on_server"].is_null());
  EXPECT_THAT(json["log"].dump(), HasSubstr("Taken as equal: auto-increment (1)"));

  const TAnswer same = Run({"compare", a_, a_, "--dialect", "exact"});
  EXPECT_EQ(same.out, "Databases are identical. Nothing to synchronize.\n");
  EXPECT_EQ(same.status, 0);
}

TEST_F(ExactCommandTest, ATableThatCannotBeReadIsAWarningAndADifference) {
  WriteFileText(b_, std::string(kReference) + "CREATE TABLE `bad` (\n  `a` int(11);\n");
  const TAnswer text = Run({"compare", a_, b_, "--dialect", "exact"});
  EXPECT_EQ(text.status, 1);
  EXPECT_EQ(text.out, "1 table could not be compared\n");
  EXPECT_THAT(text.err, HasSubstr("target: table bad is skipped: " + b_ + ": line 11: "));
  EXPECT_EQ(Run({"script", a_, b_, "--dialect", "exact"}).status, 2) << "the table stays as it is";
  const TJson json = TJson::parse(Run({"compare", a_, b_, "--dialect", "exact", "--format", "json"}).out);
  EXPECT_EQ(json["identical"], false);
  EXPECT_EQ(json["skipped"][0]["table"], "bad");
}

// Nothing of a table is dropped or changed that a file says more of than can be followed.
TEST_F(ExactCommandTest, WhatAFileSaysAndCannotBeFollowedIsLeftAlone) {
  const struct {
    const char* file;
    const char* fault;
  } kCases[] = {
      {"\ncreate table u as select 1;", "line 2: Table u is made of the rows of a query"},
      {"create table u (a int);\n\nalter table u add partition (partition p values less than (1));", "line 3: "},
      {"create table u (a int); alter table u drop column b;", "line 1: Table u has no column b"},
      {"alter table u add b int;", "line 1: There is no table u"},
      {"create table u (a int);\nrename table u to v; create table u like v; alter table u check partition p;",
       "line 2: "},
      {"create table u (a int, key (c), c int, check (any_of(a)));", "line 1: Table u, CONSTRAINT_1: whether"},
      {"set sql_mode = 'ansi';\ncreate table u (a int, b char(3) as (a || 'x'));", "line 2: \"||\" means something"},
      {"create table u (`a\nb` int);", "line 1: the name `a\\nb` holds a line end"},
  };
  for (const auto& row : kCases) {
    WriteFileText(a_, std::string(row.file) + " create table if not exists v (a int);");
    WriteFileText(b_, "create table u (a int, c int, key (c), check (a = 1)); create table v (a int);");
    const TAnswer text = Run({"compare", a_, b_, "--dialect", "exact"});
    EXPECT_EQ(text.status, 1) << row.file;
    EXPECT_EQ(text.out, "1 table could not be compared\n") << row.file;
    EXPECT_THAT(text.err, HasSubstr("table u is skipped: " + a_ + ": " + row.fault));
    EXPECT_THAT(text.err, HasSubstr("--via-server"));
  }
}

// Nothing that differs, or that the file lacks, is changed where a statement may have made it so.
TEST_F(ExactCommandTest, ScriptsThatMayDoMoreThanTheySayAreNeverIdentical) {
  for (const std::string statement :
       {"call p()", "prepare s from @s", "/*!50001 execute s */", "source x.sql", "\\. x.sql",
        "if 1 then alter table t add b int", "begin not atomic drop table t"}) {
    WriteFileText(a_, "use d\ncreate table t (a int);\ncreate table same (a int);\n" + statement + "\n;");
    WriteFileText(b_, "create table t (a int, key (a)); create table same (a int); create table other (a int);");
    const TAnswer text = Run({"compare", a_, b_, "--dialect", "exact"});
    EXPECT_EQ(text.status, 1) << statement;
    EXPECT_THAT(text.out, StartsWith("2 tables could not be compared\n1 statement could not be followed")) << statement;
    EXPECT_THAT(text.err, HasSubstr("not followed: " + a_ + ": line 4: ")) << statement;
    WriteFileText(b_, "create table t (a int); create table same (a int);");
    EXPECT_EQ(Run({"compare", a_, b_, "--dialect", "exact"}).status, 1) << statement;
  }
}

TEST_F(ExactCommandTest, TheScriptIsTakenByAnyClient) {
  const TAnswer script = Run({"script", a_, b_, "--dialect", "exact", "-o", "-"});
  EXPECT_EQ(script.status, 0) << script.err;
  EXPECT_THAT(script.out, StartsWith("-- Script created by Orvanex Velmora "));
  EXPECT_THAT(script.out,
              HasSubstr(".\r\n-- Modifying MySQL database " + b_ + " to be equal to MySQL reference database " + a_ +
                        ".\r\n\r\nset @velmora_foreign_key_checks = @@foreign_key_checks;\r\n"
                        "set foreign_key_checks = 0;\r\n\r\n-- unsafe: column kind: "));
  EXPECT_THAT(script.out, ::testing::EndsWith(";\r\n\r\nset foreign_key_checks = @velmora_foreign_key_checks;\r\n"));
}

// Tables whose texts are equal are not taken apart unless their foreign keys stand in the way of another one's change.
TEST_F(ExactCommandTest, ForeignKeysOfEqualTablesGiveWay) {
  const struct {
    const char* reference;
    bool stands_in_the_way;
  } cases[] = {
      {"REFERENCES `Parent` (`id`)", true},           {"references parent(id)", true},
      {"REFERENCES /* the */ `parent` (`id`)", true}, {"REFERENCES\n  `parent` (`id`) ON DELETE CASCADE", true},
      {"REFERENCES `other` (`id`)", false},           {"REFERENCES `elsewhere`.`parent` (`id`)", false},
  };
  for (const auto& c : cases) {
    const std::string child =
        "CREATE TABLE `child` (\n  `p` int(11) DEFAULT NULL COMMENT 'references `x` (',\n  KEY `k` (`p`),\n"
        "  CONSTRAINT `f` FOREIGN KEY (`p`) " +
        std::string(c.reference) + "\n) ENGINE=InnoDB;\n";
    const auto parent = [](const std::string& type) {
      return "CREATE TABLE `parent` (\n  `id` " + type + " NOT NULL,\n  PRIMARY KEY (`id`)\n) ENGINE=InnoDB;\n";
    };
    WriteFileText(a_, child + parent("bigint(20)"));
    WriteFileText(b_, child + parent("int(11)"));
    const std::string script = Run({"script", a_, b_, "--dialect", "exact"}).out;
    const std::size_t dropped = script.find("alter table `child` drop foreign key `f`;");
    const std::size_t changed = script.find("alter table `parent` modify column");
    const std::size_t added = script.find("alter table `child` add CONSTRAINT `f`");
    ASSERT_NE(changed, std::string::npos) << c.reference;
    EXPECT_EQ(dropped < changed, c.stands_in_the_way) << script;
    EXPECT_EQ(added != std::string::npos && added > changed, c.stands_in_the_way) << script;
    EXPECT_THAT(Run({"compare", a_, b_, "--dialect", "exact"}).out, HasSubstr("Verified: 0 differences left\n"));
  }
}

TEST_F(ExactCommandTest, WhatAFileCannotDo) {
  const struct {
    std::vector<std::string> arguments;
    std::string told;
  } cases[] = {
      {{"script", a_, b_, "--dialect", "exact", "--verify-on-server"}, "is a script file: it cannot run statements"},
      {{"compare", "Paradox:folder=" + folder_.Path(), b_, "--dialect", "exact"},
       " cannot be compared: a reference has to be a MySQL server or a file"},
      {{"compare", "DBF:folder=" + folder_.Path(), b_, "--dialect", "standard"}, "DBF database " + folder_.Path()},
      {{"script", none_, b_, "--dialect", "exact"}, none_ + " has no tables"},
      {{"script", none_, b_, "--dialect", "standard"}, "if that is meant, give --allow-empty-reference"},
      {{"sync", none_, b_, "--yes", "--dialect", "standard"}, none_ + " has no tables"},
      {{"compare", a_, b_, "--verify-on-server"}, "Only a script of the exact dialect can be verified on the server"},
      {{"compare", a_, b_, "--dialect", "other"}, "is none of standard, exact"},
      {{"sync", a_, b_, "--dialect", "exact", "--yes"},
       ", with 1 unsafe change: nothing was run; to run all of it, give --allow"},
      {{"sync", a_, b_, "--dialect", "exact", "--yes", "--allow-unsafe"}, "is a script file"},
      {{"sync", a_, b_, "--script", a_, "--verify-on-server", "--yes"}, "--verify-on-server excludes --script"},
  };
  for (const auto& c : cases) {
    const TAnswer answer = Run(c.arguments);
    EXPECT_EQ(answer.status, 2);
    EXPECT_EQ(answer.out, "") << "no action comes before the error";
    EXPECT_THAT(answer.err, HasSubstr(c.told));
    EXPECT_EQ(answer.err.find("\n\n"), std::string::npos);
  }
}

TEST_F(ExactCommandTest, AReferenceWithoutTablesTakesAWord) {
  const TAnswer compared = Run({"compare", none_, b_, "--dialect", "exact"});
  EXPECT_EQ(compared.status, 1);
  EXPECT_THAT(compared.err, HasSubstr("warning: " + none_ + " has no tables: made equal to it, the target would lose"));
  WriteFileText(none_, "create table t (a int); drop table t;");
  EXPECT_THAT(Run({"script", none_, b_, "--dialect", "exact"}).err, HasSubstr(none_ + " has no tables"));
  const TAnswer script = Run({"script", none_, b_, "--dialect", "exact", "--allow-empty-reference"});
  EXPECT_EQ(script.status, 0);
  EXPECT_THAT(script.out, HasSubstr("\r\ndrop table `items`;\r\n"));
}

TEST_F(ExactCommandTest, ATaskFileKeepsTheDialect) {
  const std::string file = folder_ / "t.vlt";
  const std::vector<std::string> create = {"task", "new", file, "mysql://u:p@h/r", "mysql://u:p@h/t"};
  Run(create);
  const std::string plain = ReadFileText(file);
  std::vector<std::string> exact = create;
  exact.insert(exact.end(), {"--dialect", "exact"});
  Run(exact);
  EXPECT_NE(ReadFileText(file), plain);
  EXPECT_THAT(Run({"task", "show", file}).out, HasSubstr("\ndialect: exact\n"));
  std::vector<std::string> standard = create;
  standard.insert(standard.end(), {"--dialect", "standard"});
  Run(standard);
  EXPECT_EQ(ReadFileText(file), plain) << "nothing is written of the standard dialect";
}

}  // namespace
}  // namespace velmora
