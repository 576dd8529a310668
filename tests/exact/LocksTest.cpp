// SPDX-License-Identifier: GPL-3.0-or-later

// What statements lock, and how a plan is made to lock less. What real servers do: scripts/measure-classes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exact/Cases.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/plan/LockPlan.h"
#include "exact/plan/PlanApply.h"
#include "exact/plan/StatementLocks.h"
#include "exact/run/PairReader.h"
#include "exact/run/TableSizes.h"
#include "support/LineDiff.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

TEST(StatementLocks, HangOnTheServerAndTheTable) {
  for (const TStringList& cells : CaseRows("exact/locks.txt")) {
    SCOPED_TRACE(JoinList(cells, " | "));
    const std::size_t options = cells[1].find(" @");
    const std::string table = "create table t (" + cells[1].substr(0, options) + ")" +
                              (options == std::string::npos ? "" : cells[1].substr(options + 2));
    const bool checks = !cells[3].starts_with("unchecked ");
    const ELockClass is =
        ClassOfStatement("alter table `t` " + cells[2], ReadTableText(table), ReadServerTraits(cells[0]), checks);
    EXPECT_EQ((checks ? "" : "unchecked ") + std::string(LockWord(is)), cells[3]);
  }
}

std::string Outcome(const std::vector<TPlanStatement>& plan) {
  std::string text;
  for (const TPlanStatement& statement : plan) {
    text += std::string(LockWord(statement.lock)) + ": " +
            StrReplace(StrReplace(statement.text, ",\n  ", ", "), "\n  ", " ") + " --";
    for (const int id : statement.actions) text += " " + std::to_string(id);
    text += statement.unsafe.empty() ? "\n" : " unsafe\n";
  }
  return text;
}

TEST(LockPlans, PutClausesApartWhereThatIsCheaper) {
  for (const TSchemaCase& c : SchemaCases("lock_plans.txt")) {
    SCOPED_TRACE(c.name + c.outcome);
    const TSchema reference = SchemaOf(c.reference);
    TSchema target = SchemaOf(c.target);
    TEquivalenceUse use;
    std::vector<TChange> changes = SchemaChanges(reference, target, use);
    for (std::size_t i = 0; i < changes.size(); ++i) changes[i].id = static_cast<int>(i) + 1;
    const TServerTraits traits = ReadServerTraits(c.name);
    const TPlanServer server{.mysql = traits.mysql, .mariadb = !traits.mysql, .version = traits.version};
    const auto plan = [&](ELockClass algorithm) {
      return WithLocks(MakePlan(changes, reference, target, server), changes, target, server, algorithm);
    };
    EXPECT_EQ(LineDiff(c.outcome, Outcome(plan(ELockClass::Unknown))), "");
    // The words for the server change nothing of what statements do.
    for (const TPlanStatement& statement : plan(ELockClass::InPlace)) {
      EXPECT_NE(statement.text.find(" algorithm=in"), std::string::npos);
      ApplyStatement(statement.text, target);
    }
    EXPECT_TRUE(SchemaChanges(reference, target, use).empty());
  }
}

TEST(TableSizes, AreToldInUnitsThatFit) {
  EXPECT_EQ((TTableSize{1, 1023}.Text()), "about 1 row, 1023 bytes");
  EXPECT_EQ((TTableSize{0, 1024 * 1024 - 1}.Text()), "about 0 rows, 1023.9 KB");
  EXPECT_EQ((TTableSize{1200000, 5LL << 29}.Text()), "about 1200000 rows, 2.5 GB");
}

}  // namespace
}  // namespace velmora::testing
