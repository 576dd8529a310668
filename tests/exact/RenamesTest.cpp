// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/Renames.h"

#include <gtest/gtest.h>

#include "exact/Cases.h"
#include "exact/plan/PlanApply.h"
#include "exact/plan/RenamePlan.h"
#include "exact/run/PairReader.h"
#include "support/MessageOf.h"
#include "util/Errors.h"
#include "util/Lists.h"

namespace velmora::testing {
namespace {

std::string Offered(const TSchemaCase& c) {
  const TSchema reference = SchemaOf(c.reference), target = SchemaOf(c.target);
  TEquivalenceUse use;
  std::vector<TChange> changes = SchemaChanges(reference, target, use);
  for (std::size_t i = 0; i < changes.size(); ++i) changes[i].id = static_cast<int>(i) + 1;
  std::string told;
  for (const TRenameOffer& offer : RenameOffers(changes, reference, target, use)) told += offer.Text() + "\n";
  return told;
}

TEST(RenamesTest, WhatIsAlikeAndNearIsOfferedOnce) {
  for (const TSchemaCase& c : SchemaCases("offers.txt")) EXPECT_EQ(Offered(c), c.outcome) << c.name;
}

TEST(RenamesTest, NamesStandAsTheyAreOrInBackticks) {
  for (const char* text : {"a=b", "t.a=b", "`a.b`.`c=d`=`e``f`"}) EXPECT_EQ(ReadRename(text).Text(), text);
  for (const char* text : {"", "a", "a=", "=b", ".a=b", "a.b.c=d", "a=b=c", "a=b.c", "`a=b", "a=`"})
    EXPECT_THROW(ReadRename(text), EVelmora) << text;
}

// By the words that each server has, and what is read of them is what the rename does. The name of a case says what is
// renamed.
TEST(RenamesTest, EachServerIsToldInItsWords) {
  for (const TSchemaCase& c : SchemaCases("renames.txt")) {
    SCOPED_TRACE(c.name);
    TStringList wishes;
    SplitPlain(' ', c.name, wishes);
    std::string statements;
    for (const TServerTraits& server : {TServerTraits{.mysql = true, .version = 90704}, TServerTraits{true, 50700},
                                        TServerTraits{.version = 101100}, TServerTraits{.version = 100400}}) {
      TSchema schema = SchemaOf(c.target), renamed = SchemaOf(c.target);
      for (const std::string& wish : wishes) {
        const TRename rename = ReadRename(wish);
        for (const TPlanStatement& statement : RenameStatements(rename, server, schema, false)) {
          statements += statement.text + (statement.checks_on ? " -- checked\n" : "\n");
          ApplyStatement(statement.text, schema, server);
        }
        ApplyRename(rename, server, renamed);
      }
      TEquivalenceUse use;
      EXPECT_TRUE(SchemaChanges(renamed, schema, use).empty()) << statements;
      EXPECT_TRUE(SchemaChanges(SchemaOf(c.reference), schema, use).empty()) << statements;
    }
    EXPECT_EQ(statements, c.outcome);
  }
}

}  // namespace
}  // namespace velmora::testing
