#include "exact/compare/Changes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "support/MessageOf.h"

namespace velmora {
namespace {

using testing::MessageOf;

TTableText Table(const std::string& body, const std::string& end = {}) {
  return ReadTableText("CREATE TABLE `t` (" + body + ") ENGINE=InnoDB" + end);
}

std::string Lines(const std::vector<TChange>& changes) {
  std::string lines;
  for (const auto& change : changes) {
    lines += change.LogText();
    if (change.after) lines += change.after->empty() ? " first" : " after " + *change.after;
    lines += "\n";
  }
  return lines;
}

std::string Compared(const TTableText& reference, const TTableText& target) {
  TEquivalenceUse use;
  return Lines(CompareTableTexts(reference, target, use));
}

struct TCase {
  const char* name;
  const char* reference;
  const char* target;
  const char* changes;
};

TEST(ChangesTest, OneChangePerElementInTheirOrder) {
  const TCase cases[] = {
      {"the same", "`a` int, KEY `k` (`a`)", "`a` int, KEY `k` (`a`)", ""},
      {"columns", "`a` int, `n` int, `c` bigint", "`a` int, `c` int, `d` int",
       "Obsolete column d\nChanged column c\nNew column n after a\n"},
      {"a new first column", "`n` int, `a` int", "`a` int", "New column n first\n"},
      {"one move and not two", "`a` int, `b` int, `c` int", "`b` int, `c` int, `a` int", "Moved column a first\n"},
      {"moved and changed is one change", "`a` bigint, `b` int, `c` int", "`b` int, `c` int, `a` int",
       "Changed column a first\n"},
      {"changed before moved before new", "`n` int, `c` int, `b` bigint, `a` int", "`a` int, `b` int, `c` int",
       "Changed column b after c\nMoved column c after n\nNew column n first\n"},
      {"names of columns ignore case", "`A` int", "`a` bigint", "Changed column a\n"},
      {"keys", "`a` int, PRIMARY KEY (`a`), KEY `k` (`a`), UNIQUE KEY `n` (`a`)",
       "`a` int, KEY `k` (`a`,`a`), KEY `o` (`a`)",
       "Obsolete index o\nNew index PRIMARY\nChanged index k\nNew index n\n"},
      {"a key that becomes unique is one change", "`a` int, UNIQUE KEY `k` (`a`)", "`a` int, KEY `k` (`a`)",
       "Changed index k\n"},
      {"a key and a check of one name are two things", "`a` int, CONSTRAINT `k` CHECK (`a` > 1)",
       "`a` int, KEY `k` (`a`)", "Obsolete index k\nNew constraint k\n"},
      {"checks before foreign keys",
       "`a` int, CONSTRAINT `f` FOREIGN KEY (`a`) REFERENCES `p` (`x`), CONSTRAINT `c` CHECK (`a` > 1)",
       "`a` int, CONSTRAINT `f` FOREIGN KEY (`a`) REFERENCES `p` (`y`), CONSTRAINT `c` CHECK (`a` > 2)",
       "Changed constraint c\nChanged constraint f\n"},
      {"nameless elements are found by what they say", "`a` int, CHECK (`a` > 1), CHECK (`a` < 9)",
       "`a` int, CHECK (`a` > 1)", "New constraint \n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Compared(Table(c.reference), Table(c.target)), c.changes);
  }
}

TEST(ChangesTest, OptionsComeFirstAndPartitioningLast) {
  const auto reference = Table("`a` int, `b` int", " COMMENT='new' PARTITION BY HASH (`a`)");
  const auto target = Table("`a` int", " COMMENT='old'");
  EXPECT_EQ(Compared(reference, target),
            "Changed options of table t\nNew column b after a\nChanged partitioning of table t\n");
}

TEST(ChangesTest, AColumnThatInheritsAnotherCharacterSetIsChanged) {
  const auto reference =
      Table("`a` varchar(9), `b` varchar(9) CHARACTER SET latin1, `n` int", " DEFAULT CHARSET=utf8mb4");
  const auto target = Table("`a` varchar(9), `b` varchar(9), `n` int", " DEFAULT CHARSET=latin1");
  EXPECT_EQ(Compared(reference, target), "Changed options of table t\nChanged column a\n");
}

TEST(ChangesTest, WhatCannotBeNamedOrIsNotKnownIsRefused) {
  const auto compare = [](const TTableText& reference, const TTableText& target) {
    return MessageOf([&] { Compared(reference, target); });
  };
  EXPECT_EQ(compare(Table("`a` int"), Table("`a` int, CHECK (`a` > 1)")),
            "Table t: \"CHECK (`a` > 1)\" has no name by which it could be changed");
  TTableText odd = Table("`a` int");
  odd.elements.push_back({EElement::Other, "", "LIKE x"});
  EXPECT_EQ(compare(odd, Table("`a` int")), "Table t: \"LIKE x\" is of a kind that cannot be changed");
  EXPECT_EQ(compare(odd, odd), "nothing raised");
}

TEST(ChangesTest, KeysInAnotherOrderAreCountedAndNoDifference) {
  TEquivalenceUse use;
  const auto one = Table("`a` int, key `x` (`a`), key `y` (`a`), key `n` (`a`), check (`a` > 0)");
  const auto other = Table("`a` int, key `o` (`a`), key `y` (`a`), key `x` (`a`), check (`a` > 0)");
  EXPECT_EQ(CompareTableTexts(one, other, use).size(), 2U) << "one goes, one comes";
  EXPECT_EQ(use.Count(EEquivalence::KeyOrder), 1);
  CompareTableTexts(one, one, use);
  EXPECT_EQ(use.Count(EEquivalence::KeyOrder), 1);
}

TEST(ChangesTest, DescriptionsShowBothTextsPlaceAndReason) {
  TEquivalenceUse use;
  const auto changes = CompareTableTexts(Table("`b` int, `a` int"), Table("`a` bigint, `b` int"), use);
  ASSERT_EQ(changes.size(), 2U);
  EXPECT_EQ(changes[0].Description(),
            "Target: `a` bigint\nReference: `a` int\nUnsafe: bigint to int: values may be out of range");
  EXPECT_EQ(changes[1].Description(), "Target: `b` int\nReference: `b` int\nPlace: first");
}

// Against the plain rule: no subsequence of more members is increasing.
TEST(ChangesTest, LongestIncreasingIsLongest) {
  std::vector<std::size_t> order(7);
  std::iota(order.begin(), order.end(), 0U);
  do {
    std::vector<std::size_t> length(order.size(), 1);
    for (std::size_t i = 0; i < order.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j)
        if (order[j] < order[i]) length[i] = std::max(length[i], length[j] + 1);
    }
    const auto places = LongestIncreasing(order);
    ASSERT_EQ(places.size(), *std::max_element(length.begin(), length.end()));
    for (std::size_t i = 1; i < places.size(); ++i) {
      ASSERT_LT(places[i - 1], places[i]);
      ASSERT_LT(order[places[i - 1]], order[places[i]]);
    }
  } while (std::next_permutation(order.begin(), order.end()));
  EXPECT_TRUE(LongestIncreasing({}).empty());
}

}  // namespace
}  // namespace velmora
