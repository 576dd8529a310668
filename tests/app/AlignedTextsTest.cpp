// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AlignedTexts.h"

#include <gtest/gtest.h>

#include <map>

#include "app/TextBlocks.h"
#include "support/CaseFile.h"
#include "util/Text.h"

namespace velmora {
namespace {

using testing::ReadCaseFile;
using testing::TCaseText;

constexpr char kKindLetters[] = {'=', '~', '*', '<', '>'};  // by EAlignedRow

// A line without its end, what counts in [], what does not in {}; "/" for none.
std::string Shown(const TAlignedSide& side, const std::vector<std::string_view>& lines) {
  if (!side.line) return "/";
  std::string line(lines.at(*side.line));
  std::map<std::size_t, std::string> marks;
  for (const TLetters& letters : side.counts) marks[letters.first] += "[", marks[letters.last].insert(0, "]");
  for (const TLetters& letters : side.ignored) marks[letters.first] += "{", marks[letters.last].insert(0, "}");
  for (auto mark = marks.rbegin(); mark != marks.rend(); ++mark) line.insert(mark->first, mark->second);
  return line.substr(0, line.find_first_of("\r\n"));
}

std::string Shown(const TAlignedRows& rows, const std::string& left, const std::string& right) {
  std::string text;
  for (const TAlignedRow& row : rows) {
    text += kKindLetters[static_cast<int>(row.kind)] + std::string(" ") + Shown(row.sides[kLeft], LinesWithEnds(left));
    if (row.kind != EAlignedRow::Same) text += " | " + Shown(row.sides[kRight], LinesWithEnds(right));
    if (row.moved) text += " (moved)";
    text += "\n";
    if (!row.note.empty()) text += "    " + StrReplace(row.note, "\n", "\n    ") + "\n";
  }
  return text.substr(0, text.size() - 1);
}

TEST(AlignedTexts, StandByWhatTheirLinesMean) {
  for (const TCaseText& one : ReadCaseFile("app/aligned.txt").cases) {
    const TStringList parts = one.Parts();
    for (const char* line_end : {"\n", "\r\n", "\r"}) {
      const std::string left = StrReplace(parts.at(0), "\n", line_end);
      const std::string right = StrReplace(parts.at(1), "\n", line_end);
      EXPECT_EQ(Shown(AlignTexts(left, right, TEquivalenceUse()), left, right), parts.at(2)) << one.name;
    }
  }
}

TEST(AlignedTexts, EquivalencesThatAreOffCount) {
  const std::string left = "CREATE TABLE `t` (\n  `a` int(11) NOT NULL\n)";
  const std::string right = "CREATE TABLE `t` (\n  `a` int NOT NULL\n)";
  TEquivalenceUse use;
  use.Switch(EEquivalence::DisplayWidth, false);
  EXPECT_EQ(AlignTexts(left, right, TEquivalenceUse())[1].kind, EAlignedRow::Equal);
  EXPECT_EQ(AlignTexts(left, right, use)[1].kind, EAlignedRow::Changed);
}

// Whatever is cut off: every line once and in order, and a first row that has a line of each text.
TEST(AlignedTexts, HoldEveryLineOfBothTexts) {
  for (const TCaseText& one : ReadCaseFile("app/aligned.txt").cases) {
    const TStringList parts = one.Parts();
    const std::string& left = parts.at(0);
    for (std::size_t length = 0; length <= parts.at(1).size(); ++length) {
      const std::string right = parts.at(1).substr(0, length);
      const TAlignedRows rows = AlignTexts(left, right, TEquivalenceUse());
      std::array<std::size_t, 2> next{};
      for (const TAlignedRow& row : rows)
        for (const ESide side : {kLeft, kRight})
          if (row.sides[side].line) ASSERT_EQ(*row.sides[side].line, next[side]++) << one.name << " at " << length;
      ASSERT_EQ(next[kLeft], LinesWithEnds(left).size());
      ASSERT_EQ(next[kRight], LinesWithEnds(right).size());
      if (!left.empty() && !right.empty()) ASSERT_TRUE(rows[0].sides[kLeft].line && rows[0].sides[kRight].line);
    }
  }
}

}  // namespace
}  // namespace velmora
