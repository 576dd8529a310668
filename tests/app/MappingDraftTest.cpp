// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MappingDraft.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/MessageOf.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::MessageOf;

// Two columns of a type, one of which a rule for that type with its size has decided, and elements of one name.
TFindings Found() {
  TFindings found;
  found.mapping = {{"t",
                    "a",
                    "number(10,2)",
                    "double",
                    EMadeLevel::Info,
                    "",
                    {"T$.a", "t.a", "number(10,2)", "number"},
                    "Number (10, 2)"},
                   {"t",
                    "b=c",
                    "number",
                    "decimal(65,30)",
                    EMadeLevel::Warning,
                    "no precision",
                    {"T$.b=c", "t.b=c", "number", "number"}},
                   {"t", "", "", "", EMadeLevel::Refused, "nothing"}};
  found.unmade = {{"t", "a", "default", "why"}, {"T", "A", "check", "why not"}};
  return found;
}

TForeignWishes Wishes() {
  TForeignWishes wishes;
  wishes.rules = {{"Number (10, 2)", "double"}};
  wishes.accepted = {"gone.x"};
  return wishes;
}

TEST(MappingDraftTest, TheNearestRuleDecidesAndARemovedOneLeavesTheTypeOpen) {
  TMappingDraft draft(Wishes(), Found());
  const TMadeColumn& a = draft.Columns()[0];
  const TMadeColumn& b = draft.Columns()[1];
  EXPECT_EQ(draft.UseOf(0), "1 column");
  draft.PutRule({"number", "decimal(20,4)"});
  draft.PutRule({" t$.A ", "int"});
  EXPECT_EQ(draft.TypeOf(a), "int");
  EXPECT_EQ(draft.TypeOf(b), "decimal(20,4)");
  EXPECT_EQ(draft.OwnRule(a), 2U);
  EXPECT_EQ(draft.OwnRule(b), std::nullopt) << "the rule for the type is no column's own";
  EXPECT_EQ(draft.UseOf(0), "no column");
  draft.PutRule({"t.b=c", "bigint"});
  EXPECT_EQ(draft.TypeOf(b), "bigint") << "names may have the sign that ends them";
  EXPECT_THAT(draft.Shown(EMappingShown::ByRules, ""), ElementsAre(0, 1));
  EXPECT_THAT(draft.Shown(EMappingShown::Warnings, "PRECISION"), IsEmpty()) << "the rule has taken that away";
  EXPECT_THAT(draft.Shown(EMappingShown::Refused, "no"), ElementsAre(2));
  for (const int place : {3, 2, 1, 0}) draft.RemoveRule(static_cast<std::size_t>(place));
  EXPECT_EQ(draft.TypeOf(a), "") << "only a comparison can tell";
  EXPECT_EQ(draft.TypeOf(b), "decimal(65,30)");
}

TEST(MappingDraftTest, AWrongRuleIsNamedAndChangesNothing) {
  TMappingDraft draft(Wishes(), Found());
  EXPECT_EQ(MessageOf([&] {
              draft.PutRule({"NUMBER(10,2)", "int"});
            }),
            "There is a rule for it already: Number (10, 2)=double");
  EXPECT_EQ(MessageOf([&] {
              draft.PutRule({"t.a", "int not null"}, 0);
            }),
            "t.a=int not null: int not null is no type of MySQL's");
  EXPECT_EQ(MessageOf([&] {
              draft.PutRule({"", "int"});
            }),
            "=int is no rule of the mapping: write TABLE.COLUMN=type, or a type of the source=type");
  EXPECT_EQ(draft.Rules(), Wishes().rules);
  draft.PutRule({"number (10,2)", "float"}, 0);
  EXPECT_THAT(draft.Rules(), ElementsAre(TMapRule{"number (10,2)", "float"}));
}

TEST(MappingDraftTest, ElementsOfOneNameGoTogetherAndWhatIsGoneCanBeTakenBack) {
  TMappingDraft draft(Wishes(), Found());
  ASSERT_EQ(draft.Elements().size(), 3U);
  draft.Accept(1, true);
  EXPECT_TRUE(draft.Elements()[0].accepted);
  draft.Accept(2, false);
  EXPECT_THAT(draft.Wishes().accepted, ElementsAre("T.A"));
  draft.Accept(0, false);
  EXPECT_THAT(draft.Wishes().accepted, IsEmpty());
}

}  // namespace
}  // namespace velmora
