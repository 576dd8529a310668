#include "util/Words.h"

#include <gmock/gmock.h>

#include <optional>

#include "support/MessageOf.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using testing::MessageOf;
using ::testing::PrintToString;

struct TWordCase {
  std::string_view text;
  std::size_t pos;
  std::size_t start;
  std::string_view word;
};

TEST(WordsTest, StrNextWordGivesTheWordAtOrBehindThePosition) {
  const TWordCase cases[] = {
      {"create table", 1, 1, "create"},
      {"create table", 7, 8, "table"},
      {"create table", 10, 8, "table"},  // from inside: the whole of it
      {"a \t\r\n b", 2, 7, "b"},
      {"a(b", 2, 2, "("},
      {"a(b", 3, 3, "b"},
      {"a,,b", 3, 3, ","},
      {"`a_1%#\"x", 1, 1, "`a_1%#\"x"},  // none of these is a delimiter
      {"-1.5", 1, 1, "-"},
      {"-1.5", 2, 2, "1"},
      {"it's", 1, 1, "it"},
      {"it's", 3, 3, "'"},
      {"\xC3\xA9t\xC3\xA9 x", 2, 1, "\xC3\xA9t\xC3\xA9"},
      {"a  ", 2, 4, ""},
      {"a", 2, 2, ""},
      {"a", 7, 7, ""},
      {"", 1, 1, ""},
  };
  for (const TWordCase& c : cases) {
    std::size_t start = 99;
    std::string_view word = "none";
    StrNextWord(c.text, c.pos, start, word);
    EXPECT_EQ(start, c.start) << PrintToString(c.text) << " from " << c.pos;
    EXPECT_EQ(word, c.word) << PrintToString(c.text) << " from " << c.pos;
  }
}

TEST(WordsTest, StrNextWordReadsALiteralWhereItStartsAtThePosition) {
  const TWordCase cases[] = {
      {"x 'a b' y", 3, 3, "'a b'"},
      {"x \"a 'b\" y", 3, 3, "\"a 'b\""},
      {"''", 1, 1, "''"},
      {"'it''s'", 1, 1, "'it'"},  // doubling is not known
      {R"('it\'s' x)", 1, 1, R"('it\'s')"},
      {R"('a\\' x 'b')", 1, 1, R"('a\\' x ')"},  // an escaped backslash neither
      {R"('a\' b\' c)", 1, 1, R"('a\' b\')"},    // all escaped: the last one closes
      {" 'a b'", 1, 2, "'"},                     // not at the position: no literal
      {"a'b", 1, 1, "a"},
  };
  for (const TWordCase& c : cases) {
    std::size_t start = 99;
    std::string_view word;
    StrNextWord(c.text, c.pos, start, word, true);
    EXPECT_EQ(start, c.start) << c.text;
    EXPECT_EQ(word, c.word) << c.text;
  }
}

struct TPrevCase {
  std::string_view text;
  std::size_t pos;
  bool quotes, skipDelimiters;
  std::size_t start;
  std::string_view word;
};

TEST(WordsTest, StrPrevWordGivesTheWordBeforeThePosition) {
  const TPrevCase cases[] = {
      {"add column a", 5, false, false, 1, "add"},
      {"add \r\n a", 8, false, false, 1, "add"},
      {"add column a", 13, false, false, 12, "a"},
      {"add column a", 99, false, false, 12, "a"},
      {"a, b", 3, false, false, 2, ","},
      {"a, (b", 5, false, true, 1, "a"},
      {"abc", 3, false, false, 1, "abc"},
      {"abc", 1, false, false, 1, ""},
      {"  abc", 3, false, false, 1, ""},  // nothing but white space in front
      {"", 1, false, false, 1, ""},
      {"x 'a b' y", 8, true, false, 3, "'a b'"},
      {R"(x "a\" b" y)", 10, true, false, 3, R"("a\" b")"},
      {"'a' y", 4, true, false, 1, "'a'"},
      {"x 'a b' y", 8, false, false, 7, "'"},
      {"x 'a b' y", 8, true, true, 6, "b"},  // the apostrophe is a delimiter, passed over
  };
  for (const TPrevCase& c : cases) {
    std::size_t start = 99;
    std::string_view word = "none";
    StrPrevWord(c.text, c.pos, start, word, c.quotes, c.skipDelimiters);
    EXPECT_EQ(start, c.start) << PrintToString(c.text) << " before " << c.pos;
    EXPECT_EQ(word, c.word) << PrintToString(c.text) << " before " << c.pos;
  }
}

TEST(WordsTest, UnpairedQuotesRaise) {
  std::size_t start = 0;
  std::string_view word;
  EXPECT_EQ(MessageOf([&] { StrNextWord("x 'abc", 3, start, word, true); }), "StrNextWord: Invalid string.");
  EXPECT_EQ(MessageOf([&] { StrNextWord("\"it's", 1, start, word, true); }), "StrNextWord: Invalid string.");
  EXPECT_EQ(MessageOf([&] { StrPrevWord("abc'", 5, start, word, true); }), "StrPrevWord: Invalid string.");
  EXPECT_EQ(MessageOf([&] { StrPrevWord("'", 2, start, word, true); }), "StrPrevWord: Invalid string.");
  EXPECT_EQ(MessageOf([&] { StrPrevWord(R"(\'abc')", 7, start, word, true); }), "StrPrevWord: Invalid string.");
}

TEST(WordsTest, InQuotesWhereEitherKindIsOddBeforeThePosition) {
  struct TCase {
    std::string_view text;
    std::size_t pos;
    bool quotes, inside;
  };
  const TCase cases[] = {
      {"'a' b", 1, true, false},  {"'a' b", 2, true, true},     {"'a' b", 3, true, true},
      {"'a' b", 4, true, false},  {"\"a'b", 3, true, true},     {"\"a'b\"c", 6, true, true},   // the apostrophe is odd
      {R"('\'b)", 4, true, true}, {R"('\'b)", 4, false, false}, {R"('a\n';)", 6, true, true},  // two behind a backslash
      {"'", 99, true, true},      {"", 1, true, false},
  };
  for (const TCase& c : cases) EXPECT_EQ(InQuotes(c.text, c.pos, c.quotes), c.inside) << c.text << " at " << c.pos;
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

TEST(WordsTest, FindWordTakesWholeWordsOutsideQuotes) {
  struct TCase {
    std::string_view word, text;
    std::size_t from, outside, anywhere;
  };
  const TCase cases[] = {
      {"go", "gone go", 1, 6, 6},  {"go", "agogo\rgo", 1, 7, 7},
      {"go", "agogo go", 4, 7, 7},  // from inside a longer word
      {"go", "Go", 1, 0, 0},       {"go", "", 1, 0, 0},
      {"", "go", 1, 0, 0},         {";", "a;b", 3, 0, 0},
      {";", "';';", 1, 4, 2},      {";", "\";\"';';", 1, 7, 2},
      {";", "'a;b", 1, 0, 3},      {";;", "a;;b", 1, 0, 0},  // no single word
      {" ", "a b", 1, 0, 0},
  };
  for (const TCase& c : cases) {
    EXPECT_EQ(FindWord(c.word, c.text, c.from, false), c.outside) << c.word << " in " << PrintToString(c.text);
    EXPECT_EQ(FindWord(c.word, c.text, c.from, true), c.anywhere) << c.word << " in " << PrintToString(c.text);
  }
}

TEST(WordsTest, SplitWordsDropsOneMoreCharacterBehindEachSeparator) {
  struct TCase {
    std::string_view separator, text;
    bool quoted;
    TStringList pieces;
  };
  const TCase cases[] = {
      {";", "", false, {""}},
      {";", "a", false, {"a"}},
      {";", "a;", false, {"a", ""}},
      {";", "a;\r\nb;\r\n", false, {"a", "\nb", "\n"}},
      {";", "a;\nb", false, {"a", "b"}},
      {";", "select 1;select 2", false, {"select 1", "elect 2"}},
      {";", "a;\u00e4b;\U0001F600c;\xE4", false, {"a", "b", "c", ""}},
      {";", "a;;b", false, {"a", "b"}},  // the second separator is the byte dropped
      {";", "insert 'a;b';\rc", false, {"insert 'a;b'", "c"}},
      {";", "insert 'a;b';\rc", true, {"insert 'a", "'", "c"}},
      {";", "a;'b;c", false, {"a", "b;c"}},                              // the dropped quote counts
      {";", R"(x 'a\n';y 'b;c';z)", false, {R"(x 'a\n';y 'b)", "';z"}},  // so does not one two behind a backslash
      {"go", "a go b ergo go\rc", false, {"a ", "b ergo ", "c"}},
      {"", "a;b", false, {"a;b"}},
  };
  for (const TCase& c : cases) {
    TStringList list = {"old"};
    SplitWords(c.separator, c.text, list, c.quoted);
    EXPECT_EQ(list, c.pieces) << PrintToString(c.text);
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
