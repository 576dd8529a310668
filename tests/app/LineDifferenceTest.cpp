#include "app/LineDifference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(LineDifference, LeavesOutALongestCommonSequence) {
  struct TCase {
    TStringList a, b;
    std::vector<std::size_t> in_a, in_b;
  };
  const TCase kCases[] = {
      {{}, {}, {}, {}},
      {{"x", "y"}, {"x", "y"}, {}, {}},
      {{"x"}, {}, {0}, {}},
      {{"x", "a", "y"}, {"x", "b", "y"}, {1}, {1}},
      {{"x", "y", "z"}, {"x", "n", "y", "z"}, {}, {1}},
      {{"a", "b", "c", "d"}, {"d", "a", "b", "c"}, {3}, {0}},
      {{"(", "a", ")"}, {"(", ")"}, {1}, {}},
  };
  for (const TCase& item : kCases) {
    const auto [in_a, in_b] = DifferingLines(item.a, item.b);
    EXPECT_EQ(in_a, item.in_a) << ::testing::PrintToString(item.a);
    EXPECT_EQ(in_b, item.in_b) << ::testing::PrintToString(item.b);
  }
}

TEST(LineDifference, OfCreationTextsCountsWhatLinesMean) {
  const std::string target =
      "CREATE TABLE `t` (\n  `a` int(11) NOT NULL,\n  `b` int DEFAULT NULL,\n  PRIMARY KEY (`a`),\n  KEY `k` (`b`),\n"
      "  KEY `l` (`b`,`a`)\n) ENGINE=InnoDB AUTO_INCREMENT=7 DEFAULT CHARSET=utf8mb4";
  struct TCase {
    const char* name;
    std::string reference;
    std::vector<std::size_t> in_reference, in_target;
  };
  const TCase kCases[] = {
      {"a comma, taken as equal, another order of keys",
       "CREATE TABLE `t` (\n  `a` int NOT NULL,\n  `b` int(11) DEFAULT NULL,\n  PRIMARY KEY (`a`),\n"
       "  KEY `l` (`b`,`a`) USING BTREE,\n  KEY `k` (`b`)\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4",
       {},
       {}},
      {"a changed column, a key less, another option",
       "CREATE TABLE `t` (\n  `a` bigint NOT NULL,\n  `b` int DEFAULT NULL,\n  PRIMARY KEY (`a`),\n  KEY `k` (`b`)\n"
       ") ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COMMENT='x'",
       {1, 5},
       {1, 5, 6}},
      {"what cannot be read goes by its letters", "CREATE TABLE `t` (\n  `a` int(11) NOT NULL,", {}, {2, 3, 4, 5, 6}},
      {"no text", "", {}, {0, 1, 2, 3, 4, 5, 6}},
  };
  for (const TCase& item : kCases) {
    const auto [in_a, in_b] = DifferingLines(item.reference, target, TEquivalenceUse());
    EXPECT_EQ(in_a, item.in_reference) << item.name;
    EXPECT_EQ(in_b, item.in_target) << item.name;
  }
}

TEST(LineDifference, TextsBeyondTheBoundAreMarkedWholeBetweenTheirEnds) {
  TStringList a(5000, "same");
  TStringList b = a;
  a[1] = "first";
  b[4000] = "other";
  const auto [in_a, in_b] = DifferingLines(a, b);
  EXPECT_EQ(in_a.front(), 1U);
  EXPECT_EQ(in_a.back(), 4000U);
  EXPECT_EQ(in_b.size(), in_a.size());
}

}  // namespace
}  // namespace velmora
