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
