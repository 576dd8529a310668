// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/Selection.h"

#include <gtest/gtest.h>

#include "exact/run/ExactWishes.h"
#include "support/CaseFile.h"
#include "support/MessageOf.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

// "+ PATTERN" for only, "- PATTERN" for except, one after the other.
TSelection SelectionOf(const std::string& text) {
  TSelection selection;
  TStringList words;
  SplitPlain(' ', text, words);
  for (std::size_t i = 0; i + 1 < words.size(); i += 2)
    (words[i] == "+" ? selection.only : selection.except).push_back(ReadPattern(words[i + 1]));
  return selection;
}

struct TKindCase {
  std::string_view word;
  TSyncAction action;
  EElement kind;
};
constexpr TKindCase kChanges[] = {
    {"column", saModifyColumn, EElement::Column},           {"index", saDropKey, EElement::UniqueKey},
    {"foreign-key", saAddConstraint, EElement::ForeignKey}, {"check", saModifyConstraint, EElement::Check},
    {"new-table", saCreateTable, EElement::Column},         {"options", saChangeTableType, EElement::Column}};

// "column orders.total", "trigger t orders", "read orders"; "more table orders" for any table that is not this one
bool Takes(const TSelection& selection, const std::string& thing) {
  TStringList words;
  SplitPlain(' ', thing + " ", words);
  if (words[0] == "read") return selection.ReadsTable(words[1]);
  if (words[0] == "more") return !MissedKinds(selection, {words[1]}, {{words[1], words[2]}}, {}).empty();
  for (const TKindCase& row : kChanges) {
    if (row.word != words[0]) continue;
    const std::size_t dot = words[1].find('.');
    TChange change;
    change.action = row.action;
    change.kind = row.kind;
    change.table = words[1].substr(0, dot);
    change.item = row.word == "options" ? kOptionsItem : dot == std::string::npos ? "" : words[1].substr(dot + 1);
    return selection.TakesChange(change);
  }
  return selection.TakesObject(words[0], words[1], words[2]);
}

TEST(SelectionTest, PatternsNameWhatTheyShould) {
  for (const TStringList& row : CaseRows("exact/selection.txt")) {
    for (const bool taken : {true, false}) {
      TStringList things;
      SplitText(", ", row.at(taken ? 1 : 2), things);
      for (const std::string& thing : things)
        EXPECT_EQ(Takes(SelectionOf(row[0]), Trim(thing)), taken) << row[0] << ": " << thing;
    }
  }
}

TEST(SelectionTest, FaultsOfPatternsAreNamed) {
  for (const char* text : {"", "table:", "orders.", ".x"})
    EXPECT_NE(MessageOf([&] { ReadPattern(text); }).find("names nothing"), std::string::npos) << text;
  EXPECT_EQ(MessageOf([] { ReadPattern("colum:a.b"); }).substr(0, 41), "\"colum\" is no kind that a pattern can nam");
}

TEST(SelectionTest, ALongPatternIsDecidedAtOnce) {
  std::string pattern;
  for (int i = 0; i < 2000; ++i) pattern += "*a";
  EXPECT_FALSE(MatchesPattern(pattern, std::string(4000, 'a') + "b"));
}

// What a task keeps is what was asked for, and what cannot be is refused with the reason.
TEST(ExactWishesTest, AreKeptAsTheyWere) {
  const std::string text = "only orders*\nexcept index:orders.ix_*\nignore comments\nstrict display-width";
  EXPECT_EQ(ExactWishesText(ReadExactWishes(text)), text);
  const TEquivalenceUse use = SwitchedEquivalences(ReadExactWishes(text + "\nstrict comments\nignore charset"));
  EXPECT_FALSE(use.On(EEquivalence::Comments));
  EXPECT_FALSE(use.On(EEquivalence::DisplayWidth));
  EXPECT_TRUE(use.On(EEquivalence::Charset));
  EXPECT_EQ(MessageOf([] { ReadExactWishes("strict key-order"); }),
            "\"key-order\" cannot be asked for strictly: no statement changes it");
}

}  // namespace
}  // namespace velmora::testing
