#include "exact/plan/Plan.h"
#include "exact/compare/Safety.h"
#include "exact/plan/PlanApply.h"
#include "mysqltext/ScriptScanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "mysqltext/Lexer.h"
#include "support/MessageOf.h"

namespace velmora {
namespace {

using testing::MessageOf;

using TTexts = std::vector<std::string>;

TSchema Schema(const TTexts& bodies) {
  TSchema schema;
  for (const auto& body : bodies) schema.Add(ReadTableText("CREATE TABLE " + body));
  return schema;
}

// With ids from 1 on.
std::vector<TChange> Changes(const TSchema& reference, const TSchema& target) {
  TEquivalenceUse use;
  std::vector<TChange> changes;
  const auto whole = [&changes](TSyncAction action, const TTableText& table) {
    changes.emplace_back();
    changes.back().action = action;
    changes.back().table = table.name;
    changes.back().unsafe = UnsafeChange(changes.back(), table, {});
  };
  for (const auto& table : target.Tables())
    if (reference.Find(table.name) == nullptr) whole(saDropTable, table);
  for (const auto& table : reference.Tables()) {
    const TTableText* there = target.Find(table.name);
    if (there == nullptr)
      whole(saCreateTable, table);
    else
      for (auto& change : CompareTableTexts(table, *there, use)) changes.push_back(std::move(change));
  }
  for (std::size_t i = 0; i < changes.size(); ++i) changes[i].id = static_cast<int>(i) + 1;
  return changes;
}

std::string PlanText(const std::vector<TPlanStatement>& plan) {
  std::string text;
  for (const auto& statement : plan) {
    text += statement.text + " --";
    for (const int id : statement.actions) text += " " + std::to_string(id);
    text += "\n";
  }
  return text;
}

void RunPlan(const std::vector<TPlanStatement>& plan, TSchema& schema) {
  for (const auto& statement : plan) ApplyStatement(statement.text, schema);
}

TEST(PlanTest, StatementsInTheOrderThatServersTake) {
  const struct {
    const char* name;
    TTexts reference;
    TTexts target;
    const char* plan;
  } cases[] = {
      {"one clause, one line", {"t (a int) COMMENT='new'"}, {"t (a int)"}, "alter table `t` COMMENT='new' -- 1\n"},
      {"options, columns, keys, checks",
       {"t (`a` int, `n` int, `b``` bigint, PRIMARY KEY (`a`), KEY `k` (`n`), CONSTRAINT `c` CHECK (`a` > 2)) "
        "ENGINE=Aria"},
       {"t (`b``` int, `a` int, `d` int, PRIMARY KEY (`d`), KEY `k` (`d`), CONSTRAINT `c` CHECK (`a` > 1)) "
        "ENGINE=InnoDB"},
       "alter table `t`\n  ENGINE=Aria,\n  drop column `d`,\n  modify column `a` int first,\n"
       "  add column `n` int after `a`,\n  modify column `b``` bigint,\n  drop primary key,\n  add PRIMARY KEY (`a`),\n"
       "  drop key `k`,\n  add KEY `k` (`n`),\n  drop constraint `c`,\n"
       "  add CONSTRAINT `c` CHECK (`a` > 2) -- 1 2 4 5 3 6 7 8\n"},
      {"a changed foreign key never in one statement",
       {"t (`a` int, KEY `f` (`a`), CONSTRAINT `f` FOREIGN KEY (`a`) REFERENCES `p` (`x`) ON DELETE CASCADE)"},
       {"t (`a` int, KEY `f` (`a`), CONSTRAINT `f` FOREIGN KEY (`a`) REFERENCES `p` (`x`))"},
       "alter table `t` drop foreign key `f` -- 1\n"
       "alter table `t` add CONSTRAINT `f` FOREIGN KEY (`a`) REFERENCES `p` (`x`) ON DELETE CASCADE -- 1\n"},
      {"foreign keys on a changed column make way, on both sides of it",
       {"p (`id` bigint, PRIMARY KEY (`id`))",
        "c (`p` int, `q` int, CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `P` (`id`))",
        "d (`p` int, CONSTRAINT `g` FOREIGN KEY (`p`) REFERENCES `q` (`id`))"},
       {"p (`id` int, PRIMARY KEY (`id`))",
        "c (`p` int, `q` int, CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `P` (`id`))",
        "d (`p` int, CONSTRAINT `g` FOREIGN KEY (`p`) REFERENCES `q` (`id`))"},
       "alter table `c` drop foreign key `f` -- 1\nalter table `p` modify column `id` bigint -- 1\n"
       "alter table `c` add CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `P` (`id`) -- 1\n"},
      {"not for a default, a comment, or a move",
       {"c (`q` int, `p` int DEFAULT 1 COMMENT 'x', CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `p` (`id`))"},
       {"c (`p` int, `q` int, CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `p` (`id`))"},
       nullptr},
      {"but for one whose members may be others than those that are printed",
       {"c (`p` enum('a','?') COMMENT 'x', CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `p` (`id`))"},
       {"c (`p` enum('a','?'), CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `p` (`id`))"},
       "alter table `c` drop foreign key `f` -- 1\nalter table `c` modify column `p` enum('a','?') COMMENT 'x' -- 1\n"
       "alter table `c` add CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `p` (`id`) -- 1\n"},
      {"another engine takes no foreign key along, not even to itself",
       {"c (`p` int, CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `c` (`p`)) ENGINE=X"},
       {"c (`p` int, CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `c` (`p`)) ENGINE=Y"},
       "alter table `c` drop foreign key `f` -- 1\nalter table `c` ENGINE=X -- 1\n"
       "alter table `c` add CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `c` (`p`) -- 1\n"},
      {"what outlives the engine is set behind it",
       {"t (`a` int) ENGINE=InnoDB"},
       {"t (`a` int) ENGINE=Aria PAGE_CHECKSUM=0"},
       "alter table `t` ENGINE=InnoDB -- 1\nalter table `t` PAGE_CHECKSUM=DEFAULT -- 1\n"},
      {"and so is what a table names once it is no longer partitioned",
       {"t (`a` int) ENGINE=MEMORY"},
       {"t (`a` int) ENGINE=Aria PARTITION BY HASH (`a`)"},
       "alter table `t` remove partitioning -- 2\nalter table `t` ENGINE=MEMORY -- 1\n"
       "alter table `t` PAGE_CHECKSUM=DEFAULT -- 1\n"},
      {"what another engine does not know is not set back, and its partitions follow",
       {"t (`a` int) ENGINE=MyISAM PARTITION BY HASH (`a`) (PARTITION p ENGINE = MyISAM)"},
       {"t (`a` int) ENGINE=Aria TRANSACTIONAL=0 `x`=1 PARTITION BY HASH (`a`) (PARTITION p ENGINE = Aria)"},
       "alter table `t` ENGINE=MyISAM -- 1\n"},
      {"unique keys by hash come again behind what makes servers forget it",
       {"t (`a` bigint, `b` int, UNIQUE KEY `h` (`a`) USING HASH, UNIQUE KEY `i` (`b`) USING HASH)"},
       {"t (`a` int, `b` int, UNIQUE KEY `h` (`a`) USING HASH)"},
       "alter table `t`\n  modify column `a` bigint,\n  add UNIQUE KEY `i` (`b`) USING HASH -- 1 2\n"
       "alter table `t`\n  drop key `h`,\n  add UNIQUE KEY `h` (`a`) USING HASH,\n"
       "  drop key `i`,\n  add UNIQUE KEY `i` (`b`) USING HASH -- 1 2\n"},
      {"which their own statement does not",
       {"t (`a` bigint, UNIQUE KEY `h` (`a`) USING HASH)"},
       {"t (`a` int)"},
       "alter table `t`\n  modify column `a` bigint,\n  add UNIQUE KEY `h` (`a`) USING HASH -- 1 2\n"},
      {"types that do not convert: the column comes anew, with its keys and checks",
       {"t (`a` uuid, `b` int, KEY `k` (`b`,`a`), KEY `l` (`b`), CONSTRAINT `c` CHECK (`a` is null))"},
       {"t (`a` int, `b` int, KEY `k` (`b`,`a`), KEY `l` (`b`), CONSTRAINT `c` CHECK (`a` is null))"},
       "alter table `t`\n  drop column `a`,\n  add column `a` uuid first,\n  drop key `k`,\n  add KEY `k` (`b`,`a`),\n"
       "  drop constraint `c`,\n  add CONSTRAINT `c` CHECK (`a` is null) -- 1\n"},
      {"a check goes with what its column is computed of",
       {"t (`a` int, `g` int AS (`a`), CONSTRAINT `c` CHECK (`g` > 1))"},
       {"t (`a` int, `b` int, `g` int AS (`b`), CONSTRAINT `c` CHECK (`g` > 1))"},
       "alter table `t`\n  drop column `b`,\n  modify column `g` int AS (`a`),\n  drop constraint `c`,\n"
       "  add CONSTRAINT `c` CHECK (`g` > 1) -- 1 2\n"},
      {"drops, then new tables, then their foreign keys",
       {"n (`p` int, CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `m` (`id`))", "m (`id` int)"},
       {"o (`p` int, CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `x` (`id`))"},
       "drop table `o` -- 1\nCREATE TABLE `n` (\n  `p` int\n) -- 2\nCREATE TABLE `m` (\n  `id` int\n) -- 3\n"
       "alter table `n` add CONSTRAINT `f` FOREIGN KEY (`p`) REFERENCES `m` (`id`) -- 2\n"},
      {"partitioning ends its statement",
       {"t (`a` int, `b` int) PARTITION BY HASH (`b`)"},
       {"t (`a` int)"},
       "alter table `t`\n  add column `b` int after `a`\n  PARTITION BY HASH (`b`) -- 1 2\n"},
      {"and goes before its column does",
       {"t (`a` int)"},
       {"t (`a` int, `b` int) PARTITION BY HASH (`b`)"},
       "alter table `t` remove partitioning -- 2\nalter table `t` drop column `b` -- 1\n"},
      {"where columns go that the table was partitioned by, before it is partitioned by others",
       {"t (`a` int) PARTITION BY HASH (`a`)", "u (`b` uuid) PARTITION BY KEY (`b`)"},
       {"t (`a` int, `b` int) PARTITION BY HASH (`b`)", "u (`b` int) PARTITION BY KEY (`b`)"},
       "alter table `t` remove partitioning -- 1 2\nalter table `u` remove partitioning -- 3\n"
       "alter table `t`\n  drop column `b`\n  PARTITION BY HASH (`a`) -- 1 2\n"
       "alter table `u`\n  drop column `b`,\n  add column `b` uuid first\n  PARTITION BY KEY (`b`) -- 3\n"},
      {"the use of a key changes in place; with more of it the table is made anew, or nothing would change",
       {"t (`a` int, KEY `i` (`a`) IGNORED, KEY `j` (`a`) /*!80000 INVISIBLE */, KEY `k` (`a`) COMMENT 'k', KEY `l` "
        "(`a`), "
        "KEY `m` (`a`), KEY `n` (`a`))"},
       {"t (`a` int, KEY `i` (`a`), KEY `j` (`a`), KEY `k` (`a`) COMMENT 'k' IGNORED, KEY `l` (`a`) /*!80000 INVISIBLE "
        "*/, "
        "KEY `m` (`a`) COMMENT 'k' IGNORED, KEY `n` (`a`) KEY_BLOCK_SIZE=4)"},
       "alter table `t`\n  alter index `i` ignored,\n  alter index `j` invisible,\n  alter index `k` not ignored,\n"
       "  alter index `l` visible,\n  force,\n  drop key `m`,\n  add KEY `m` (`a`),\n  drop key `n`,\n"
       "  add KEY `n` (`a`) -- 1 2 3 4 5 6\n"},
      {"defaults of bytes are written as such",
       {"t (`a` varbinary(9) DEFAULT '\xff\\0''', `b` varbinary(9) DEFAULT '\\0x', `c` varchar(9) DEFAULT 'é')"},
       {"t (`b` varbinary(9) DEFAULT '\\0x')"},
       "alter table `t`\n  add column `a` varbinary(9) DEFAULT x'ff0027' first,\n"
       "  add column `c` varchar(9) DEFAULT 'é' after `b` -- 1 2\n"},
      {"but not of a key that has to come anew",
       {"t (`a` uuid, KEY `i` (`a`) IGNORED)"},
       {"t (`a` int, KEY `i` (`a`))"},
       "alter table `t`\n  drop column `a`,\n  add column `a` uuid first,\n  force,\n  drop key `i`,\n"
       "  add KEY `i` (`a`) IGNORED -- 1 2\n"},
      {"a method that is usual for one engine only",
       {"t (`a` int, KEY `k` (`a`)) ENGINE=MEMORY"},
       {"t (`a` int, KEY `k` (`a`) USING BTREE) ENGINE=InnoDB"},
       "alter table `t`\n  ENGINE=MEMORY,\n  drop key `k`,\n  add KEY `k` (`a`) -- 1 2\n"},
      {"keys come along from memory without directions that nobody saw",
       {"t (`a` int, `b` int, PRIMARY KEY (`a`), KEY `k` (`b`)) ENGINE=Aria"},
       {"t (`a` int, `b` int, PRIMARY KEY (`a`), KEY `k` (`b`)) ENGINE=MEMORY"},
       "alter table `t`\n  ENGINE=Aria,\n  drop primary key,\n  add PRIMARY KEY (`a`),\n  drop key `k`,\n"
       "  add KEY `k` (`b`) -- 1\n"},
      {"a check's name is free before another table gets it, as where names are those of a database",
       {"a (`x` int, CONSTRAINT `c` CHECK (`x` > 1))", "b (`x` int, CONSTRAINT `D` CHECK (`x` > 2))"},
       {"a (`x` int, CONSTRAINT `d` CHECK (`x` > 1), CONSTRAINT `e` CHECK (`x` > 1))",
        "b (`x` int, CONSTRAINT `C` CHECK (`x` > 2))"},
       "alter table `a` drop constraint `d` -- 1\nalter table `b` drop constraint `C` -- 4\n"
       "alter table `a`\n  drop constraint `e`,\n  add CONSTRAINT `c` CHECK (`x` > 1) -- 2 3\n"
       "alter table `b` add CONSTRAINT `D` CHECK (`x` > 2) -- 5\n"},
      {"a virtual column is replaced, its key stays",
       {"t (`a` int, `g` int, `h` int, KEY `k` (`g`))"},
       {"t (`a` int, `g` int GENERATED ALWAYS AS (`a`) VIRTUAL, `h` int, KEY `k` (`g`))"},
       "alter table `t`\n  drop column `g`,\n  add column `g` int after `a` -- 1\n"},
      {"and so do the checks that read it, made anew",
       {"t (`a` int, `g` int, CONSTRAINT `c` CHECK (`g` > 1), CONSTRAINT `d` CHECK (`a` <> 'g'))"},
       {"t (`a` int, `g` int AS (`a`), CONSTRAINT `c` CHECK (`g` > 1), CONSTRAINT `d` CHECK (`a` <> 'g'))"},
       "alter table `t`\n  drop column `g`,\n  add column `g` int after `a`,\n  drop constraint `c`,\n"
       "  add CONSTRAINT `c` CHECK (`g` > 1) -- 1\n"},
      {"a counting column and its key change together",
       {"t (`a` int NOT NULL AUTO_INCREMENT, PRIMARY KEY (`a`))"},
       {"t (`a` int NOT NULL)"},
       "alter table `t`\n  modify column `a` int NOT NULL AUTO_INCREMENT,\n  add PRIMARY KEY (`a`) -- 1 2\n"},
      {"a column goes with all its keys",
       {"t (`a` int)"},
       {"t (`a` int, `d` int, KEY `d` (`d`), KEY `e` (`d`,`a`), CONSTRAINT `f` FOREIGN KEY (`d`) REFERENCES `p` "
        "(`x`))"},
       "alter table `t` drop foreign key `f` -- 4\nalter table `t`\n  drop column `d`,\n  drop key `d`,\n  drop key "
       "`e` -- 1 2 3\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const TSchema reference = Schema(c.reference);
    TSchema target = Schema(c.target);
    const auto plan = MakePlan(Changes(reference, target), reference, target);
    if (c.plan != nullptr)
      EXPECT_EQ(PlanText(plan), c.plan);
    else
      EXPECT_EQ(PlanText(plan).find("foreign key `f`"), std::string::npos) << PlanText(plan);
    RunPlan(plan, target);
    EXPECT_EQ(PlanText(MakePlan(Changes(reference, target), reference, target)), "");
  }
}

TEST(PlanTest, WhatIsStruckOutLeavesItsStatement) {
  const TSchema reference = Schema({"t (`a` int, `n` int, `m` varchar(9), KEY `k` (`n`)) DEFAULT CHARSET=utf8mb4"});
  const TSchema target = Schema({"t (`a` int, `d` int) DEFAULT CHARSET=latin1"});
  const auto all = Changes(reference, target);  // options, drop d, add n, add m, add k
  ASSERT_EQ(all.size(), 5U);
  const auto plan = [&](std::vector<std::size_t> kept) {
    std::vector<TChange> changes;
    for (const std::size_t i : kept) changes.push_back(all[i]);
    return PlanText(MakePlan(changes, reference, target));
  };
  EXPECT_EQ(plan({}), "");
  EXPECT_EQ(plan({4}), "alter table `t` add KEY `k` (`n`) -- 5\n");
  // Without the column it was to follow it comes behind the one before that; without the table's new character set it
  // says its own.
  EXPECT_EQ(plan({0, 3}),
            "alter table `t`\n  DEFAULT CHARSET=utf8mb4,\n  add column `m` varchar(9) after `a` -- 1 4\n");
  EXPECT_EQ(plan({3}), "alter table `t` add column `m` varchar(9) CHARACTER SET utf8mb4 after `a` -- 4\n");
}

TEST(PlanTest, StatementsSayWhyTheyAreUnsafe) {
  const TSchema reference = Schema({"t (`a` int)"});
  const TSchema target = Schema(
      {"t (`a` bigint, UNIQUE KEY `k` (`a`), CONSTRAINT `f` FOREIGN KEY (`a`) REFERENCES `t` (`a`))", "o (`a` int)"});
  std::vector<std::string> reasons;
  for (const auto& statement : MakePlan(Changes(reference, target), reference, target))
    reasons.insert(reasons.end(), statement.unsafe.begin(), statement.unsafe.end());
  EXPECT_EQ(reasons, (std::vector<std::string>{"table o: the table is dropped with its rows",
                                               "column a: bigint to int: values may be out of range",
                                               "key k: equal rows may enter from then on"}));
}

TEST(ApplyStatementTest, RefusesWhatServersRefuse) {
  const struct {
    const char* statement;
    const char* message;
  } cases[] = {
      {"select 1", "This statement cannot be followed: select 1"},
      {"alter table `t` rename to `x`", "This statement cannot be followed: alter table `t` rename to `x`"},
      {"drop table `x`", "There is no table x"},
      {"CREATE TABLE `t` (`a` int)", "There is a table t already"},
      {"alter table `t` drop column `x`", "Table t has no column x"},
      {"alter table `t` drop primary key", "Table t has no primary key PRIMARY"},
      {"alter table `t` drop key `f`", "Table t has no key f"},
      {"alter table `t` modify column `a` int after `x`", "Table t has no column x"},
      {"alter table `t` add column `A` int", "Table t has A already"},
      {"alter table `t` add UNIQUE KEY `k` (`a`)", "Table t has k already"},
      {"alter table `t` drop column `b`", "Table t: foreign key f needs column b"},
  };
  for (const auto& c : cases) {
    TSchema schema =
        Schema({"t (`a` int, `b` int, KEY `k` (`a`), CONSTRAINT `f` FOREIGN KEY (`b`) REFERENCES `p` (`b`))"});
    EXPECT_EQ(MessageOf([&] { ApplyStatement(c.statement, schema); }), c.message);
  }
}

TEST(ApplyStatementTest, FollowsServersWhereTheResultIsNotInTheStatement) {
  const struct {
    const char* name;
    const char* table;
    const char* statement;
    const char* result;
  } cases[] = {
      {"a new character set leaves the columns",
       "t (`a` varchar(9), `b` enum('(',')') COLLATE latin1_bin, `c` text, `n` int) DEFAULT CHARSET=latin1 "
       "COLLATE=latin1_bin",
       "alter table `t` DEFAULT CHARSET=utf8mb4, modify column `c` text",
       "`a` varchar(9) CHARACTER SET latin1 COLLATE latin1_bin|`b` enum('(',')') COLLATE latin1_bin|`c` text|`n` int|"
       "DEFAULT CHARSET=utf8mb4|"},
      {"a collation brings its set", "t (`n` int) DEFAULT CHARSET=latin1 COMMENT='x'",
       "alter table `t` COLLATE=utf8mb4_bin COMMENT=''", "`n` int|DEFAULT CHARSET=utf8mb4|COLLATE=utf8mb4_bin|"},
      {"keys follow a dropped column",
       "t (`a` int, `d` int, KEY `d` (`d`), KEY `k` (`a`(3), `d`) USING BTREE COMMENT '(`d`)')",
       "alter table `t` drop column `d`", "`a` int|KEY `k` (`a`(3)) USING BTREE COMMENT '(`d`)'|"},
      {"places go by the order of the clauses", "t (`a` int, `b` int, `c` int)",
       "alter table `t` modify column `c` int first, add column `n` int after `c`, add column `e` int DEFAULT 1",
       "`c` int|`n` int|`a` int|`b` int|`e` int DEFAULT 1|"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TSchema schema = Schema({c.table});
    ApplyStatement(c.statement, schema);
    std::string result;
    for (const auto& element : schema.Find("t")->elements) result += element.text + "|";
    for (const auto& option : schema.Find("t")->options) result += option.name + "=" + option.value + "|";
    EXPECT_EQ(result, c.result);
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
  std::string OneOf(const TTexts& texts) { return texts[Below(texts.size())]; }
  TTexts Some(TTexts texts) {
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
    const TTexts columns = Some({"a", "b c", "d`e", "order", "\xC3\xA9", "f", "g", "h"});
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
    const TSchema before = random.Make();
    TSchema target = before;
    const auto changes = Changes(reference, target);
    const auto plan = MakePlan(changes, reference, target);
    RunPlan(plan, target);
    ASSERT_EQ(PlanText(MakePlan(Changes(reference, target), reference, target)), "") << PlanText(plan);
    ASSERT_TRUE(Changes(reference, target).empty()) << PlanText(plan);
    for (const auto& change : changes) {
      ASSERT_TRUE(std::any_of(plan.begin(), plan.end(), [&change](const TPlanStatement& statement) {
        return std::count(statement.actions.begin(), statement.actions.end(), change.id) == 1;
      })) << change.LogText();
    }
  }
}

// Some of the changes now, those that are then found later: columns are placed all the same.
TEST(PlanTest, AnyPartOfAPlanRunsAndTheRestFollows) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE(seed);
    TRandomSchema random(seed);
    const TSchema reference = random.Make();
    TSchema target = random.Make();
    auto changes = Changes(reference, target);
    std::erase_if(changes, [&](const TChange& change) {
      return change.kind != EElement::ForeignKey && change.action != saDropColumn && random.Flip();
    });
    const auto part = MakePlan(changes, reference, target);
    RunPlan(part, target);
    const auto rest = MakePlan(Changes(reference, target), reference, target);
    RunPlan(rest, target);
    ASSERT_TRUE(Changes(reference, target).empty()) << PlanText(part) << "then\n" << PlanText(rest);
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
      {"a /* never closed; b", {"a"}},
  };
  for (const auto& c : cases) {
    std::vector<std::string> found;
    for (const auto& range : ScanStatements(c.script))
      found.push_back(std::string(c.script).substr(range.start, range.length));
    EXPECT_EQ(found, c.statements) << c.script;
  }
}

TEST(SchemaTest, KeepsTheOrderOfAddition) {
  TSchema schema = Schema({"c (a int)", "a (a int)", "b (a int)"});
  schema.Remove("a");
  schema.Add(ReadTableText("CREATE TABLE c (x int)"));
  ASSERT_EQ(schema.Tables().size(), 2U);
  EXPECT_EQ(schema.Find("c")->elements[0].name, "x");
  EXPECT_EQ(schema.Find("b"), &schema.Tables()[1]);
  EXPECT_EQ(schema.Find("B"), nullptr);
}

}  // namespace
}  // namespace velmora
