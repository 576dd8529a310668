// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/Lexer.h"

#include <gmock/gmock.h>

#include "support/MessageOf.h"

namespace velmora {
namespace {

using testing::MessageOf;

// Kind and text of every token: W word, N name, S string, 1 number, . symbol.
std::string Shown(std::string_view text) {
  std::string result;
  for (const TToken& token : Tokens(text)) {
    if (token.kind == EToken::End) break;
    if (!result.empty()) result += ' ';
    result += "WNS1."[static_cast<std::size_t>(token.kind)];
    result += token.text;
  }
  return result;
}

TEST(LexerTest, ReadsTokensOfEveryKind) {
  struct TCase {
    std::string_view text, tokens;
  };
  const TCase cases[] = {
      {"a `b``c` 'd''e' \"f\\\"g\"", "Wa N`b``c` S'd''e' S\"f\\\"g\""},
      {"'\\\\' 'a\\'b'", "S'\\\\' S'a\\'b'"},
      {"`a\\` b", "N`a\\` Wb"},
      {"_utf8mb4'x' N'y' x'4D' B'01' comment'z' _'u'", "S_utf8mb4'x' SN'y' Sx'4D' SB'01' Wcomment S'z' W_ S'u'"},
      {"1 1.5 .5 1e5 1.5e-3 2E+7 0xAf 0b01 1e 4M 5_a 0xg",
       "11 11.5 1.5 11e5 11.5e-3 12E+7 10xAf 10b01 W1e W4M W5_a W0xg"},
      {"d.1a (.5) 1.", "Wd .. W1a .( 1.5 .) 11."},
      {":= <=> <> != >= <= << >> && || -> ->> -- x\n@a", ".:= .<=> .<> .!= .>= .<= .<< .>> .&& .|| .-> .->> .@ Wa"},
      {"a/* ' */b # `\nc -- \"\n--d --", "Wa Wb Wc .- .- Wd"},
      {"a /*!80023 b */ c /*M!100301 d*/ /*! e */ /*+ f */", "Wa Wb Wc Wd We"},
      {"/*!50100 a /*!50600 b */ /* c */ d */ e * / f", "Wa Wb Wd We .* ./ Wf"},
      {"/*M!999999\\- enable ' */ a", "Wa"},
      {"\xEF\xBB\xBF\xC3\xA4$ `\xC3\xA4`", "W\xC3\xA4$ N`\xC3\xA4`"},
      {"'a\nb'\r\n\tc", "S'a\nb' Wc"},
      {"", ""},
  };
  for (const TCase& c : cases) EXPECT_EQ(Shown(c.text), c.tokens) << c.text;
}

TEST(LexerTest, NamesTheLineOfWhatIsNotClosed) {
  EXPECT_EQ(MessageOf([] { Tokens("a\n'b\n"); }), "line 2: unclosed single quote");
  EXPECT_EQ(MessageOf([] { Tokens("\n\n\"b\\\""); }), "line 3: unclosed double quote");
  EXPECT_EQ(MessageOf([] { Tokens("`a``"); }), "line 1: unclosed back quote");
  EXPECT_EQ(MessageOf([] { Tokens("a\n/* b\n"); }), "line 2: unclosed comment");
  EXPECT_EQ(MessageOf([] { Tokens("a\n/*!50100 b\n"); }), "line 2: unclosed comment");
  EXPECT_EQ(MessageOf([] { Tokens("'a\\"); }), "line 1: unclosed single quote");
}

TEST(LexerTest, ValuesAndNamesGoThereAndBack) {
  const auto value = [](std::string_view text) { return ValueOf(Tokens(text).front()); };
  EXPECT_EQ(value("'it''s \\'a\\' \"b\" \\\\ \\n\\t\\Z\\% \\_ \\q'"), "it's 'a' \"b\" \\ \n\t\x1A\\% \\_ q");
  EXPECT_EQ(value("_utf8mb4\"a\"\"b\""), "a\"b");
  EXPECT_EQ(PrefixOf(Tokens("_utf8mb4\"a\"").front()), "_utf8mb4");
  EXPECT_EQ(NameOf(Tokens("`a``b`").front()), "a`b");
  const std::string odd("`'\\\n\r\x1A\0 \"%\xC3\xA4", 13);
  EXPECT_EQ(value(QuotedText(odd)), odd);
  EXPECT_EQ(NameOf(Tokens(QuotedName(odd)).front()), odd);
}

TEST(LexerTest, WritesTokensWithoutCommentsAndWithMarksInPairs) {
  struct TCase {
    std::string_view text;
    std::size_t first, last;
    std::string_view out;
  };
  const TCase cases[] = {
      {"a  b\tc", 0, 3, "a  b\tc"},
      {"a\r\n  b/* c */d -- e\nf", 0, 4, "a b d f"},
      {"a 'x\ny'\nb", 0, 3, "a 'x\ny' b"},
      {"a /*!80023 b */ , c", 0, 2, "a /*!80023 b */"},
      {"a /*M!100301 b*/ c", 0, 3, "a /*M!100301 b*/ c"},
      {"a /*!50000 , b */ , c", 2, 3, "b"},
      {"a /*!50000 b , c */", 0, 2, "a /*!50000 b */"},
      {"a /*!50000 b */ /*!50000 , c */", 0, 2, "a /*!50000 b */"},
  };
  for (const TCase& c : cases) EXPECT_EQ(TextOf(c.text, Tokens(c.text), c.first, c.last), c.out) << c.text;
}

}  // namespace
}  // namespace velmora
