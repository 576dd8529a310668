// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Text.h"

#include <gmock/gmock.h>

#include <limits>

#include "support/MessageOf.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using testing::MessageOf;

TEST(TextTest, FoldsAsciiLettersOnly) {
  EXPECT_EQ(LowerText("AZ[`\xC3\x89"), "az[`\xC3\x89");
  EXPECT_TRUE(SameText("Kunde_\xC3\xA9", "KUNDE_\xC3\xA9"));
  EXPECT_FALSE(SameText("\xC3\xA9", "\xC3\x89"));
  EXPECT_FALSE(SameText("a", "ab"));
}

TEST(TextTest, TrimsBlanksAndControlsButNoLetters) {
  EXPECT_EQ(Trim(" \t\r\n\x01 a b \0"), "a b");
  EXPECT_EQ(Trim("\xC3\xA9 "), "\xC3\xA9");
  EXPECT_EQ(Trim(" \r\n"), "");
}

TEST(TextTest, PositionsCountFromOneAndNoneIsZero) {
  struct TCase {
    std::string_view what, text;
    std::size_t from, exact, noCase;
  };
  const TCase cases[] = {
      {"b", "abcb", 1, 2, 2}, {"b", "abcb", 3, 4, 4}, {"B", "abcb", 1, 0, 2}, {"b", "abc", 3, 0, 0},
      {"", "abc", 1, 0, 0},   {"a", "", 1, 0, 0},     {"c", "abc", 9, 0, 0},  {"a", "abc", 0, 1, 1},
  };
  for (const TCase& c : cases) {
    EXPECT_EQ(Pos(c.what, c.text, c.from), c.exact) << c.what << " in " << c.text;
    EXPECT_EQ(PosNoCase(c.what, c.text, c.from), c.noCase) << c.what << " in " << c.text;
  }
  EXPECT_EQ(LastPos("ab", "ababx"), 3U);
  EXPECT_EQ(LastPos("c", "ab"), 0U);
  EXPECT_EQ(LastPos("", "ab"), 0U);
}

TEST(TextTest, BetweenFindsTheNextCloseBehindTheFirstOpenIgnoringCase) {
  std::string out = "as it was";
  EXPECT_TRUE(Between("x) From(A) to(b)", "from(", ")", false, out));
  EXPECT_EQ(out, "A");
  EXPECT_TRUE(Between("x) From(A) to(b)", "FROM(", ")", true, out));
  EXPECT_EQ(out, "From(A)");
  EXPECT_FALSE(Between("from(a", "from(", ")", false, out));
  EXPECT_FALSE(Between("|a", "|", "|", false, out)) << "one mark does not close itself";
  EXPECT_EQ(out, "From(A)");
}

TEST(TextTest, PartsFromBothEnds) {
  struct TCase {
    std::int64_t n;
    std::string_view left, right;
  };
  constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
  for (const TCase& c : {TCase{2, "ab", "bc"}, TCase{9, "abc", "abc"}, TCase{0, "abc", "abc"}, TCase{-1, "ab", "bc"},
                         TCase{-3, "", ""}, TCase{-9, "", ""}, TCase{kLeast, "", ""}}) {
    EXPECT_EQ(LeftPart("abc", c.n), c.left) << c.n;
    EXPECT_EQ(RightPart("abc", c.n), c.right) << c.n;
  }
}

TEST(TextTest, StrChopTakesPartAndDelimiterOut) {
  struct TCase {
    std::string_view text, first, afterFirst, last, afterLast;
  };
  for (const TCase& c :
       {TCase{"a::b::c", "a", "b::c", "a::b", "c"}, TCase{"::a", "", "a", "", "a"}, TCase{"a::", "a", "", "a", ""},
        TCase{"abc", "abc", "", "abc", ""}, TCase{"", "", "", "", ""}}) {
    std::string text(c.text);
    EXPECT_EQ(StrChop("::", text, true), c.first);
    EXPECT_EQ(text, c.afterFirst);
    text = c.text;
    EXPECT_EQ(StrChopLast("::", text, true), c.last);
    EXPECT_EQ(text, c.afterLast);
  }
}

TEST(TextTest, StrChopWithoutDelimiterRaisesAndLeavesTheText) {
  std::string text = "abc";
  EXPECT_EQ(MessageOf([&] { StrChop(":", text); }), "Nothing to StrChop!");
  EXPECT_EQ(MessageOf([&] { StrChopLast(":", text); }), "Nothing to StrChop!");
  EXPECT_EQ(MessageOf([&] { StrChop("", text); }), "Nothing to StrChop!");
  EXPECT_EQ(text, "abc");
}

TEST(TextTest, StrReplaceGoesOnBehindEachReplacement) {
  EXPECT_EQ(StrReplace("a'b'", "'", "''"), "a''b''");
  EXPECT_EQ(StrReplace("aaa", "aa", "a"), "aa");
  EXPECT_EQ(StrReplace("aA", "a", ""), "A");
  EXPECT_EQ(StrReplace("abc", "", "x"), "abc");
}

TEST(TextTest, RepeatsTrimsAndRemovesCharacters) {
  EXPECT_EQ(TrimChar("''a'b''", '\''), "a'b");
  EXPECT_EQ(TrimChar("''", '\''), "");
  EXPECT_EQ(RepeatChar('0', 3), "000");
  EXPECT_EQ(RepeatChar('0', -1), "");
  EXPECT_EQ(RemoveChar("`a`.`b`", '`'), "a.b");
  EXPECT_TRUE(InList("b", {"a", "b"}));
  EXPECT_FALSE(InList("B", {"a", "b"}));
}

TEST(TextTest, AMarkThatClosesStandsAfterTheOneThatOpens) {
  std::string overlap = "a /*/ b */c";
  StripBetween(overlap, "/*", "*/");
  EXPECT_EQ(overlap, "ac");
}

TEST(TextTest, CountCharLeavesOutWhatStandsUpToTwoBehindABackslash) {
  struct TCase {
    std::string_view text;
    std::size_t length, all, unescaped;
  };
  const TCase cases[] = {
      {"'a'", 3, 2, 2},   {"'a'", 2, 1, 1},    {"'a'", 99, 2, 2},
      {R"(\')", 2, 1, 0}, {R"(\n')", 3, 1, 0}, {R"(\nn')", 4, 1, 1},
  };
  for (const TCase& c : cases) {
    EXPECT_EQ(CountChar('\'', c.text, c.length, false), c.all) << c.text;
    EXPECT_EQ(CountChar('\'', c.text, c.length, true), c.unescaped) << c.text;
  }
}

TEST(TextTest, CountsCharactersOfUtf8AndBadBytesAsOneEach) {
  struct TCase {
    std::string_view text;
    std::size_t count;
  };
  const TCase cases[] = {
      {"", 0},
      {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", 4},
      {"\xE9t\xE9", 3},              // another code page
      {"\xE2\x82", 2},               // cut off
      {"\xC0\x80", 2},               // overlong
      {"\xE0\x80\x80", 3},           // overlong
      {"\xED\xA0\x80", 3},           // a surrogate
      {"\xF4\x90\x80\x80", 4},       // beyond the last character
      {"\xF0\x9F\x98 \xC3\xA9", 5},  // broken by a blank
  };
  for (const TCase& c : cases) EXPECT_EQ(CharCount(c.text), c.count) << ::testing::PrintToString(c.text);
  EXPECT_EQ(CutChars("\xC3\xA9\xC3\xA9x", 2), "\xC3\xA9\xC3\xA9");
  EXPECT_EQ(CutChars("ab", 9), "ab");
}

}  // namespace
}  // namespace velmora
