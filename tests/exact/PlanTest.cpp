// SPDX-License-Identifier: GPL-3.0-or-later

// Which statements make a schema of another one, in the order that servers take.

#include "exact/plan/Plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "exact/Cases.h"
#include "exact/plan/PlanApply.h"
#include "exact/run/PairReader.h"
#include "exact/run/RowChecks.h"
#include "mysqltext/StatementReader.h"
#include "support/LineDiff.h"
#include "support/MessageOf.h"

namespace velmora::testing {
namespace {

using ::testing::HasSubstr;

std::vector<TChange> NumberedChanges(const TSchema& reference, const TSchema& target) {
  TEquivalenceUse use;
  std::vector<TChange> changes = SchemaChanges(reference, target, use);
  int id = 0;
  for (TChange& change : changes) change.id = ++id;
  return changes;
}

// As in "1 Changed options of table t" for a change, and "alter table `t` COMMENT='new' -- 1" for a statement with the
// changes that it makes.
std::string Outcome(const std::vector<TChange>& changes, const std::vector<TPlanStatement>& plan) {
  std::string text;
  for (const TChange& change : changes) text += std::to_string(change.id) + " " + change.LogText() + "\n";
  for (const TPlanStatement& statement : plan) {
    for (const std::string& reason : statement.unsafe) text += "-- unsafe: " + reason + "\n";
    text += statement.text + " --";
    for (const int id : statement.actions) text += " " + std::to_string(id);
    text += "\n";
  }
  return text;
}

void RunPlan(const std::vector<TPlanStatement>& plan, TSchema& schema) {
  for (const TPlanStatement& statement : plan) ApplyStatement(statement.text, schema);
}

TEST(SchemaCases, HaveTheirStatementsAndAreEqualAfterThem) {
  for (const TSchemaCase& c : SchemaCases("plans.txt")) {
    SCOPED_TRACE(c.name);
    const TSchema reference = SchemaOf(c.reference);
    TSchema target = SchemaOf(c.target);
    const auto changes = NumberedChanges(reference, target);
    const auto plan = MakePlan(changes, reference, target);
    EXPECT_EQ(LineDiff(c.outcome, Outcome(changes, plan)), "");
    RunPlan(plan, target);
    EXPECT_EQ(Outcome(NumberedChanges(reference, target), {}), "");
  }
}

TEST(PlanTest, TriggersThatAFillingWouldRunAreAskedFor) {
  const TSchema target = SchemaOf({"t (`a` int)"});
  bool asked_once = false;
  for (const char* column :
       {"`u` char(36) NOT NULL DEFAULT (uuid())", "`u` char(36) DEFAULT (uuid())", "`u` int NOT NULL"}) {
    const TSchema reference = SchemaOf({std::string("t (`a` int, ") + column + ")"});
    const bool filled = MakePlan(NumberedChanges(reference, target), reference, target).size() == 3;
    const auto questions = RowQuestions(NumberedChanges(reference, target), reference, target);
    const bool asked = std::ranges::any_of(questions, [](const TRowQuestion& question) {
      return question.sql.find("from information_schema.triggers") != std::string::npos;
    });
    EXPECT_EQ(asked, filled) << column;
    asked_once = asked_once || asked;
  }
  EXPECT_TRUE(asked_once);
}

TEST(PlanTest, ServersAreAskedWhetherTheyTakeTablesWithoutAPrimaryKey) {
  constexpr char kEither[] = "_primary_key */ /*!80030 + ";
  constexpr char kUnlessMade[] = "_primary_key */ /*!80030 > ";
  constexpr char kAny[] = "_primary_key */, 1";
  struct TRow {
    const char* wanted;
    TStringList there;
    const char* asked;  // of the query; null where the table will do
  };
  const TRow rows[] = {
      {"t (`a` int) ENGINE=InnoDB", {}, kUnlessMade},
      {"t (`a` int) ENGINE=MyISAM", {}, kAny},
      {"t (`a` int) ENGINE=InnoDB PARTITION BY HASH (`a`)", {}, kEither},
      {"t (`a` int NOT NULL, UNIQUE KEY `a` (`a`)) ENGINE=InnoDB", {}, nullptr},
      {"t (`a` int NOT NULL) ENGINE=InnoDB", {"t (`a` int, PRIMARY KEY (`a`)) ENGINE=InnoDB"}, kEither},
      {"t (`a` int) ENGINE=InnoDB", {"t (`a` bigint) ENGINE=InnoDB"}, kAny},
      {"t (`a` int NOT NULL, UNIQUE KEY `a` (`a`))", {"t (`a` bigint NOT NULL)"}, nullptr},
      {"t (`a` int NOT NULL, UNIQUE KEY `a` (`a`))", {"t (`a` bigint NOT NULL, UNIQUE KEY `a` (`a`))"}, kAny},
      {"t (`a` int, PRIMARY KEY (`a`))", {"t (`a` bigint, PRIMARY KEY (`a`))"}, nullptr},
      {"t (`a` int)", {"t (`a` int)", "p (`b` int)"}, nullptr}};
  for (const TRow& row : rows) {
    const TSchema reference = SchemaOf({row.wanted});
    const TSchema target = SchemaOf(row.there);
    const auto questions = RowQuestions(NumberedChanges(reference, target), reference, target);
    const auto found = std::ranges::find(questions, "table", &TRowQuestion::subject);
    EXPECT_EQ(found != questions.end(), row.asked != nullptr) << row.wanted;
    if (found != questions.end() && row.asked != nullptr) EXPECT_THAT(found->sql, HasSubstr(row.asked));
  }
}

TEST(PlanTest, ServersThatMakeKeysForForeignKeysAreToldThatTheyStay) {
  const std::string keys =
      "KEY `f` (`b`), FULLTEXT KEY `x` (`b`), CONSTRAINT `f` FOREIGN KEY (`b`) REFERENCES `p` (`b`)";
  const TSchema reference = SchemaOf({"t (`a` int, `b` text, " + keys + ")"});
  const TSchema target = SchemaOf({"t (`b` text, " + keys + ")"});
  const auto changes = NumberedChanges(reference, target);
  EXPECT_EQ(Outcome({}, MakePlan(changes, reference, target)), "alter table `t` add column `a` int first -- 1\n");
  EXPECT_EQ(Outcome({}, MakePlan(changes, reference, target, {.mysql = true})),
            "alter table `t`\n  add column `a` int first,\n  drop key `f`,\n  add KEY `f` (`b`) -- 1\n");
}

TEST(PlanTest, ChecksGoByTheWordOfTheServer) {
  const TSchema reference = SchemaOf({"t (`a` int)"});
  const TSchema target = SchemaOf({"t (`a` int, CONSTRAINT `x` CHECK (`a` > 1))"});
  const auto changes = NumberedChanges(reference, target);
  EXPECT_EQ(MakePlan(changes, reference, target).at(0).text, "alter table `t` drop constraint `x`");
  EXPECT_EQ(MakePlan(changes, reference, target, {.mysql = true}).at(0).text, "alter table `t` drop check `x`");
}

TEST(PlanTest, WhatIsStruckOutLeavesItsStatement) {
  const TSchema reference = SchemaOf({"t (`a` int, `n` int, `m` varchar(9), KEY `k` (`n`)) DEFAULT CHARSET=utf8mb4"});
  const TSchema target = SchemaOf({"t (`a` int, `d` int) DEFAULT CHARSET=latin1"});
  const auto all = NumberedChanges(reference, target);  // options, drop d, add n, add m, add k
  ASSERT_EQ(all.size(), 5U);
  const auto plan = [&](std::vector<std::size_t> kept) {
    std::vector<TChange> changes;
    for (const std::size_t i : kept) changes.push_back(all[i]);
    return Outcome({}, MakePlan(changes, reference, target));
  };
  EXPECT_EQ(plan({}), "");
  EXPECT_EQ(plan({4}), "alter table `t` add KEY `k` (`n`) -- 5\n");
  // Without the column it was to follow it comes after the one before that; without the table's new character set it
  // says its own.
  EXPECT_EQ(plan({0, 3}),
            "alter table `t`\n  DEFAULT CHARSET=utf8mb4,\n  add column `m` varchar(9) after `a` -- 1 4\n");
  EXPECT_EQ(plan({3}), "alter table `t` add column `m` varchar(9) CHARACTER SET utf8mb4 after `a` -- 4\n");
}

TEST(ApplyStatementTest, RefusesWhatServersRefuse) {
  for (const TStringList& row : CaseRows("exact/refused_statements.txt")) {
    TSchema schema =
        SchemaOf({"t (`a` int, `b` int, KEY `k` (`a`), CONSTRAINT `f` FOREIGN KEY (`b`) REFERENCES `p` (`b`))"});
    EXPECT_EQ(MessageOf([&] { ApplyStatement(row[0], schema); }), row.at(1));
  }
}

TEST(ApplyStatementTest, FollowsServersWhereTheResultIsNotInTheStatement) {
  for (const TStringList& row : CaseRows("exact/followed_statements.txt")) {
    TSchema schema = SchemaOf({row[0]});
    ApplyStatement(row[1], schema);
    std::string result;
    for (const auto& element : schema.Find("t")->elements) result += element.text.Str() + "|";
    for (const auto& option : schema.Find("t")->options) result += option.name + "=" + option.value + "|";
    EXPECT_EQ(result, row.at(2)) << row[1];
  }
}

// --- Any pair of schemas

class TRandomSchema {
 public:
  explicit TRandomSchema(unsigned seed) : random_(seed) {}

  TSchema Make() {
    TSchema schema;
    for (const char* name : {"alpha", "be ta", "ga`mma"})
      if (Below(4) != 0) schema.Add(ReadTableText(Table(name)));
    return schema;
  }
  bool Flip() { return Below(2) == 0; }

 private:
  std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_); }
  std::string OneOf(const TStringList& texts) { return texts[Below(texts.size())]; }
  TStringList Some(TStringList texts) {
    std::shuffle(texts.begin(), texts.end(), random_);
    texts.resize(Below(texts.size()) + 1);
    return texts;
  }

  std::string Column(const std::string& name) {
    return QuotedName(name) + " " +
           OneOf({"int", "bigint unsigned NOT NULL DEFAULT 0", "varchar(10)", "varchar(20) COLLATE utf8mb4_bin",
                  "char(3) CHARACTER SET latin1", "enum('a,b','c'')','d') DEFAULT 'd'", "decimal(9,2) COMMENT 'x; `y`'",
                  "int GENERATED ALWAYS AS (1 + (2)) VIRTUAL", "int GENERATED ALWAYS AS (2) STORED"});
  }

  std::string Table(const std::string& name) {
    const TStringList columns = Some({"a", "b c", "d`e", "order", "\xC3\xA9", "f", "g", "h"});
    std::string body;
    for (const auto& column : columns) body += (body.empty() ? "" : ", ") + Column(column);
    if (Flip()) body += ", PRIMARY KEY (" + QuotedName(OneOf(columns)) + ")";
    for (const char* key : {"k1", "k`2", "k 3"}) {
      if (Flip()) continue;
      body += ", " + OneOf({"KEY ", "UNIQUE KEY "}) + QuotedName(key) + " (" + QuotedName(OneOf(columns)) +
              OneOf({"", " DESC", "(3)"}) + ") " + OneOf({"", "COMMENT 'k'", "USING HASH"});
    }
    if (Flip()) body += ", CONSTRAINT `c1` CHECK (" + QuotedName(OneOf(columns)) + OneOf({" > 1", " <> ')'"}) + ")";
    for (const char* key : {"f1", "f2"}) {
      if (Flip()) continue;
      body += ", CONSTRAINT " + QuotedName(std::string(key) + name) + " FOREIGN KEY (" + QuotedName(OneOf(columns)) +
              ") REFERENCES " + QuotedName(OneOf({"alpha", "be ta"})) + " (" + QuotedName(OneOf({"a", "f"})) + ")" +
              OneOf({"", " ON DELETE CASCADE"});
    }
    return "CREATE TABLE " + QuotedName(name) + " (" + body + ") ENGINE=" + OneOf({"InnoDB", "InnoDB", "Aria"}) +
           " DEFAULT CHARSET=" + OneOf({"utf8mb4", "utf8mb4 COLLATE=utf8mb4_bin", "latin1"}) +
           OneOf({"", " COMMENT='it''s'", " ROW_FORMAT=DYNAMIC"}) +
           OneOf({"", "", " PARTITION BY HASH (" + QuotedName(columns[0]) + ") PARTITIONS 3"});
  }

  std::mt19937 random_;
};

TEST(PlanTest, EveryPlanMakesTheTargetEqual) {
  for (unsigned seed = 0; seed < 3000; ++seed) {
    SCOPED_TRACE(seed);
    TRandomSchema random(seed);
    const TSchema reference = random.Make();
    TSchema target = random.Make();
    const auto changes = NumberedChanges(reference, target);
    const auto plan = MakePlan(changes, reference, target);
    RunPlan(plan, target);
    ASSERT_TRUE(NumberedChanges(reference, target).empty()) << Outcome(changes, plan);
    std::set<int> served;
    for (const TPlanStatement& statement : plan) served.insert(statement.actions.begin(), statement.actions.end());
    ASSERT_EQ(served.size(), changes.size()) << Outcome(changes, plan);
  }
}

// Some of the changes now, those that are then found later: columns are placed all the same.
TEST(PlanTest, AnyPartOfAPlanRunsAndTheRestFollows) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE(seed);
    TRandomSchema random(seed);
    const TSchema reference = random.Make();
    TSchema target = random.Make();
    auto changes = NumberedChanges(reference, target);
    std::erase_if(changes, [&](const TChange& change) {
      return change.kind != EElement::ForeignKey && change.action != saDropColumn && random.Flip();
    });
    const auto part = MakePlan(changes, reference, target);
    RunPlan(part, target);
    const auto rest = MakePlan(NumberedChanges(reference, target), reference, target);
    RunPlan(rest, target);
    ASSERT_TRUE(NumberedChanges(reference, target).empty()) << Outcome({}, part) << "then\n" << Outcome({}, rest);
  }
}

TEST(ScanStatementsTest, EndsOutsideQuotesNamesAndComments) {
  const struct {
    const char* script;
    std::vector<std::string> statements;
  } cases[] = {
      {"", {}},
      {" ; ;\n-- only\n", {}},
      {"a;b ; c", {"a", "b", "c"}},
      {"a 'x;''y\\';' \";\" `;\\`;b", {"a 'x;''y\\';' \";\" `;\\`", "b"}},
      {"-- head; it's\n# more;\n/* ; ' */ a -- tail;\n;\r\nb", {"a", "b"}},
      {"a /* in; */ b;c", {"a /* in; */ b", "c"}},
      {"a--1;b --", {"a--1", "b"}},
      {"/*!40101 set x='*/;' ; */;/*M!100 y */ z;", {"/*!40101 set x='*/;' ; */", "/*M!100 y */ z"}},
      {"a 'never closed; b", {"a 'never closed; b"}},
      {"a /* never closed; b", {"a /* never closed; b"}},
      {"a; /* never closed; b", {"a", "/* never closed; b"}},
  };
  for (const auto& c : cases) {
    std::vector<std::string> found;
    for (const auto& range : ScanStatements(c.script))
      found.push_back(std::string(c.script).substr(range.start, range.length));
    EXPECT_EQ(found, c.statements) << c.script;
  }
}

TEST(SchemaTest, KeepsTheOrderOfAddition) {
  TSchema schema = SchemaOf({"c (a int)", "a (a int)", "b (a int)"});
  schema.Remove("a");
  schema.Add(ReadTableText("CREATE TABLE c (x int)"));
  ASSERT_EQ(schema.Tables().size(), 2U);
  EXPECT_EQ(schema.Find("c")->elements[0].name, "x");
  EXPECT_EQ(schema.Find("b"), &schema.Tables()[1]);
  EXPECT_EQ(schema.Find("B"), nullptr);
}

}  // namespace
}  // namespace velmora::testing
