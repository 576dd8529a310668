// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Words.h"

#include <gmock/gmock.h>

#include "support/MessageOf.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using testing::MessageOf;

TEST(WordsTest, UnpairedQuotesRaise) {
  std::size_t start = 0;
  std::string_view word;
  EXPECT_EQ(MessageOf([&] { StrNextWord("x 'abc", 3, start, word, true); }), "StrNextWord: Invalid string.");
  EXPECT_EQ(MessageOf([&] { StrNextWord("\"it's", 1, start, word, true); }), "StrNextWord: Invalid string.");
  EXPECT_EQ(MessageOf([&] { StrPrevWord("abc'", 5, start, word, true); }), "StrPrevWord: Invalid string.");
  EXPECT_EQ(MessageOf([&] { StrPrevWord("'", 2, start, word, true); }), "StrPrevWord: Invalid string.");
  EXPECT_EQ(MessageOf([&] { StrPrevWord(R"(\'abc')", 7, start, word, true); }), "StrPrevWord: Invalid string.");
}

TEST(WordsTest, QuoteCounterAgreesWithInQuotesAtEveryPosition) {
  const std::string_view text = R"(a 'b\'c' "d" \" 'e\n' f "g'h")";
  for (const bool quotes : {false, true}) {
    TQuoteCounter counter(text, quotes);
    for (std::size_t pos = 1; pos <= text.size() + 2; ++pos) {
      const bool odd =
          CountChar('\'', text, pos - 1, quotes) % 2 == 1 || CountChar('"', text, pos - 1, quotes) % 2 == 1;
      EXPECT_EQ(counter.InQuotes(pos), odd) << pos;
      EXPECT_EQ(InQuotes(text, pos, quotes), odd) << pos;
    }
  }
}

TEST(WordsTest, PiecesOfSplitWordsTellTheirPositions) {
  const std::string text = "create table a (b int);\r\ninsert into a values (';');\r\n\r\ndrop table a";
  TStringList pieces;
  SplitWords(";", text, pieces, false);
  ASSERT_EQ(pieces.size(), 3U);
  std::size_t at = 0;
  for (const std::string& piece : pieces) {
    EXPECT_EQ(text.substr(at, piece.size()), piece);
    at += piece.size() + 2;
  }
}

TEST(WordsTest, SplitTextMayBeALineOfTheList) {
  TStringList list = {"a;\rb;\rc and some more text that is not kept within the string itself"};
  SplitWords(";", list[0], list, false);
  EXPECT_THAT(list, ElementsAre("a", "b", "c and some more text that is not kept within the string itself"));
}

// These take no time worth naming as long as each byte is looked at a fixed number of times, and hours otherwise.
TEST(WordsTest, GrowsLinearlyWithTheText) {
  constexpr std::size_t kCount = 400000;
  std::string statements;
  std::string quoted = "'";
  std::string longWord;
  for (std::size_t i = 0; i < kCount; ++i) {
    statements += "insert into t values ('a;b');\r\n";
    quoted += ";\"\\';";
    longWord += "go";
  }
  TStringList list;
  SplitWords(";", statements, list, false);
  EXPECT_EQ(list.size(), kCount + 1);
  SplitWords(";", quoted, list, false);
  EXPECT_EQ(list.size(), 1U);
  SplitWords("go", longWord, list, false);
  EXPECT_EQ(list.size(), 1U);
  std::size_t start = 0;
  std::string_view word;
  std::size_t words = 0;
  for (StrNextWord(statements, 1, start, word); !word.empty(); ++words)
    StrNextWord(statements, start + word.size(), start, word);
  EXPECT_EQ(words, kCount * 12);
}

}  // namespace
}  // namespace velmora
