// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FoldedRows.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velmora {
namespace {

// Rows by their letters: "*" differs, "." does not.
TAlignedRows Rows(const std::string& kinds) {
  TAlignedRows rows;
  for (const char c : kinds) rows.push_back({.kind = c == '*' ? EAlignedRow::Changed : EAlignedRow::Equal});
  return rows;
}

// What is shown: a row as it is, "-" for a fold.
std::string Shown(const std::string& kinds, std::size_t context) {
  std::string text;
  for (const TRowStretch& stretch : FoldEqualRows(Rows(kinds), context))
    text += stretch.folded ? "-" : kinds.substr(stretch.first, stretch.last - stretch.first);
  return text;
}

TEST(FoldedRows, StayAroundDifferences) {
  const struct {
    const char* kinds;
    std::size_t context;
    const char* shown;
  } kCases[] = {
      {"", 2, ""},
      {".", 2, "."},
      {"..", 2, ".."},       // a fold of one row saves nothing
      {".......", 2, ".-"},  // equal, but for its head
      {"*......", 2, "*..-"},
      {"......*", 2, ".-..*"},
      {"....*", 2, "....*"},
      {"**.**", 0, "**.**"},
      {"**..**", 0, "**-**"},
      {".....*....*.....", 2, ".-..*....*..-"},
      {"....*.....*", 2, "....*.....*"},
      {"*....................*", 3, "*...-...*"},
  };
  for (const auto& [kinds, context, shown] : kCases) EXPECT_EQ(Shown(kinds, context), shown) << kinds;
}

// Folded or not, every row stands in one stretch.
TEST(FoldedRows, HoldEveryRow) {
  for (unsigned bits = 0; bits < 1U << 10; ++bits) {
    std::string kinds;
    for (unsigned bit = 0; bit < 10; ++bit) kinds += (bits >> bit & 1U) != 0 ? '*' : '.';
    for (std::size_t context = 0; context < 4; ++context) {
      std::size_t next = 0;
      for (const TRowStretch& stretch : FoldEqualRows(Rows(kinds), context)) {
        ASSERT_EQ(stretch.first, next);
        ASSERT_GT(stretch.last, next);
        const std::string held = kinds.substr(stretch.first, stretch.last - stretch.first);
        if (stretch.folded) ASSERT_TRUE(next > 0 && held.find('*') == std::string::npos && held.size() > 1) << kinds;
        next = stretch.last;
      }
      ASSERT_EQ(next, kinds.size());
    }
  }
}

}  // namespace
}  // namespace velmora
