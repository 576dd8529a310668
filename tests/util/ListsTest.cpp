// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Lists.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "support/MessageOf.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using testing::MessageOf;

TEST(ListsTest, SplitTextAndSplitPlainDifferForAnEmptyTextOnly) {
  struct TCase {
    std::string_view text;
    TStringList byText, plain;
  };
  const TCase cases[] = {
      {"", {}, {""}}, {"a", {"a"}, {"a"}}, {",a,,b,", {"", "a", "", "b", ""}, {"", "a", "", "b", ""}}};
  for (const TCase& c : cases) {
    TStringList list = {"old"};
    SplitText(",", c.text, list);
    EXPECT_EQ(list, c.byText) << c.text;
    SplitPlain(',', c.text, list);
    EXPECT_EQ(list, c.plain) << c.text;
  }
  TStringList list;
  SplitText("::", "a:::b::c", list);
  EXPECT_THAT(list, ElementsAre("a", ":b", "c"));
  SplitText("", "abc", list);
  EXPECT_THAT(list, ElementsAre("abc"));
}

// The same rules, searched anew for each separator.
TStringList SlowSplitQuoted(std::string_view separator, std::string_view text) {
  TStringList list;
  std::size_t start = 0, from = 1, quotePos = 0, singles = 0, doubles = 0;
  while (const std::size_t at = Pos(separator, text, start + separator.size())) {
    std::size_t apostrophe = Pos("'", text, quotePos + 1);
    std::size_t mark = Pos("\"", text, quotePos + 1);
    const std::size_t smallest = std::min({at, apostrophe, mark});
    if (apostrophe == smallest) {
      for (; apostrophe > 0 && apostrophe < at; apostrophe = Pos("'", text, quotePos + 1)) {
        ++singles;
        quotePos = apostrophe;
      }
    } else if (mark == smallest) {
      for (; mark > 0 && mark < at; mark = Pos("\"", text, mark + 1)) ++doubles;
    }
    if (singles % 2 == 0 && doubles % 2 == 0) list.emplace_back(text.substr(from - 1, at - from));
    start = at;
    from = at + separator.size();
  }
  list.emplace_back(text.substr(from - 1));
  return list;
}

TEST(ListsTest, SplitQuotedCountsAsIfItSearchedAnewEachTime) {
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string text(random() % 24, ' ');
    for (char& c : text) c = "a,,\"\"''"[random() % 7];
    for (const char* separator : {",", ",,", "\""}) {
      TStringList list;
      SplitQuoted(separator, text, list);
      ASSERT_EQ(list, SlowSplitQuoted(separator, text)) << text << " by " << separator;
    }
  }
}

TEST(ListsTest, SplitsGrowLinearlyWithTheText) {
  constexpr std::size_t kCount = 500000;
  std::string doubles;
  std::string mixed;
  for (std::size_t i = 0; i < kCount; ++i) {
    doubles += "\"x\",";
    mixed += "\"x\",'y',";
  }
  TStringList list;
  SplitQuoted(",", doubles, list);
  EXPECT_EQ(list.size(), kCount + 1);
  SplitQuoted(",", doubles + "'", list);
  EXPECT_EQ(list.size(), kCount + 1);
  SplitQuoted(",", mixed, list);
  EXPECT_EQ(list.size(), 2 * kCount + 1);
  SplitText(",", doubles, list);
  EXPECT_EQ(list.size(), kCount + 1);
}

TEST(ListsTest, JoinListIsTheMirrorOfSplitText) {
  EXPECT_EQ(JoinList({}, ", "), "");
  EXPECT_EQ(JoinList({"a"}, ", "), "a");
  EXPECT_EQ(JoinList({"a", "", "b"}, ", "), "a, , b");
}

TEST(ListsTest, LooksUpIgnoringCaseAndRefusesPositionsOutside) {
  const TStringList list = {"id", "Name", "name"};
  EXPECT_EQ(IndexOf(list, "NAME"), 1);
  EXPECT_EQ(IndexOf(list, "x"), kNotInList);
  EXPECT_EQ(ItemAt(list, 2), "name");
  EXPECT_EQ(MessageOf([&] { ItemAt(list, -1); }), "List index out of bounds (-1)");
  EXPECT_EQ(MessageOf([&] { ItemAt(list, 3); }), "List index out of bounds (3)");
}

}  // namespace
}  // namespace velmora
