// SPDX-License-Identifier: GPL-3.0-or-later

// Operations on texts, whose cases are a table.

#include <gtest/gtest.h>

#include "support/CaseFile.h"
#include "util/Format.h"
#include "util/Text.h"
#include "util/Words.h"

namespace velmora::testing {
namespace {

std::string Shown(const TStringList& pieces) { return pieces.empty() ? "nothing" : JoinList(pieces, "·"); }

// A word with where it begins.
std::string Found(std::size_t start, std::string_view word) {
  return std::to_string(start) + (word.empty() ? "" : " " + std::string(word));
}

std::string Outcome(const std::string& what, const std::string& text, const std::string& with) {
  const auto says = [&what](const char* word) { return what.find(word) != std::string::npos; };
  const auto position = [&with] { return static_cast<std::size_t>(StrToInt(with)); };
  std::size_t start = 99;
  std::string_view word = "none";
  TStringList pieces{"old"};
  if (says("next")) {
    StrNextWord(text, position(), start, word, says("literal"));
    return Found(start, word);
  }
  if (says("previous")) {
    StrPrevWord(text, position(), start, word, says("literal"), says("over"));
    return Found(start, word);
  }
  if (says("in quotes")) return InQuotes(text, position(), !says("plain")) ? "yes" : "no";
  if (says("find")) {
    const std::string sought = what.substr(std::min<std::size_t>(what.size(), 5));
    return Format("%d %d", FindWord(sought, text, position(), true), FindWord(sought, text, position(), false));
  }
  if (says("split words")) SplitWords(with.substr(0, with.find(" all")), text, pieces, with.ends_with(" all"));
  if (says("split quoted")) SplitQuoted(with, text, pieces);
  if (says("lines")) pieces = LinesOf(text);
  if (!says("strip")) return Shown(pieces);
  std::string stripped = text;
  StripBetween(stripped, "--", "\r");
  return stripped;
}

TEST(TextCases, GiveWhatTheTableSays) {
  for (TStringList& row : CaseRows("util/texts.txt")) {
    row.resize(4);
    EXPECT_EQ(Outcome(Unshown(row[0]), Unshown(row[1]), Unshown(row[2])), Unshown(row[3])) << JoinList(row, " | ");
  }
}

// What a file of text cannot hold: a byte that is no letter goes as one, and is none that a mark takes along.
TEST(TextCases, BytesThatAreNoLetter) {
  EXPECT_EQ(Outcome("split words", "a;\u00e4b;\U0001F600c;\xE4", ";"), "a·b·c·");
  EXPECT_EQ(Outcome("strip", "a\u00e4\xA4--x\rb", ""), "a\u00e4b");
}

}  // namespace
}  // namespace velmora::testing
