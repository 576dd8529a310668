// SPDX-License-Identifier: GPL-3.0-or-later

// What differs between two tables, and what of it may lose data.

#include "exact/compare/Changes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "exact/Cases.h"
#include "exact/compare/SameExpressions.h"
#include "support/MessageOf.h"
#include "util/Errors.h"

namespace velmora::testing {
namespace {

std::vector<TChange> Compared(const TTableCase& c, TEquivalenceUse& use) {
  return CompareTableTexts(ReadTableText("create table t " + c.wanted), ReadTableText("create table t " + c.there),
                           use);
}

std::string Line(const TChange& change) {
  TStringList options;
  for (const TTableOption& option : change.options) options.push_back(option.name + "=" + option.value);
  if (!options.empty()) return JoinList(options, ", ");
  const std::string place = !change.after ? "" : change.after->empty() ? " first" : " after " + *change.after;
  return change.LogText() + place;
}

// As in "Changed column a; = display-width": each change, then each equivalence that made something equal. Or the
// message of the error.
std::string Told(const TTableCase& c, TEquivalenceUse& use) {
  TStringList lines;
  const std::string message = MessageOf([&] {
    for (const TChange& change : Compared(c, use)) lines.push_back(Line(change));
  });
  if (message != "nothing raised") return message;
  for (const TEquivalence& row : Equivalences()) {
    const int count = use.Count(row.id);
    if (count > 0) lines.push_back("= " + std::string(row.name) + (count > 1 ? " " + std::to_string(count) : ""));
  }
  return JoinList(lines, "; ");
}

TEST(TableCases, TellWhatDiffersAndWhatIsTakenAsEqual) {
  for (const char* file : {"changes.txt", "equal.txt"})
    for (const TTableCase& c : TableCases(file)) {
      TEquivalenceUse use;
      EXPECT_EQ(Told(c, use), c.told) << c.there << " | " << c.wanted;
    }
}

// With the sides exchanged; and what an equivalence has made equal differs without it.
void ExpectNeeded(const std::string& file, const TEquivalenceUse& at_first) {
  for (const TTableCase& c : TableCases(file)) {
    if (!c.told.empty() && !c.told.starts_with("= ")) continue;
    SCOPED_TRACE(c.there + " | " + c.wanted);
    TEquivalenceUse use = at_first;
    EXPECT_EQ(Told({c.wanted, c.there}, use), c.told);
    for (const TEquivalence& row : Equivalences()) {
      if (use.Count(row.id) == 0) continue;
      TEquivalenceUse without = at_first;
      without.Switch(row.id, false);
      EXPECT_FALSE(Compared(c, without).empty()) << row.name;
      EXPECT_EQ(without.Count(row.id), 0) << row.name;
    }
  }
}

TEST(TableCases, EachEquivalenceWorksBothWaysAndIsNeeded) {
  ExpectNeeded("equal.txt", {});
  TEquivalenceUse all;
  for (const TEquivalence& row : Equivalences()) all.Switch(row.id, true);
  ExpectNeeded("ignored.txt", all);
}

TEST(TableCases, SayWhyDataMayBeLost) {
  for (const TTableCase& c : TableCases("unsafe.txt")) {
    SCOPED_TRACE(c.there + " | " + c.wanted);
    TEquivalenceUse use;
    TStringList reasons;
    const auto changes = Compared(c, use);
    EXPECT_FALSE(changes.empty());
    for (const TChange& change : changes)
      if (!change.unsafe.empty()) reasons.push_back(change.unsafe);
    EXPECT_EQ(JoinList(reasons, " & "), c.told);
  }
}

TEST(TableCases, DescriptionsShowBothTextsPlaceAndReason) {
  TEquivalenceUse use;
  const auto changes = Compared({"(`a` bigint, `b` int)", "(`b` int, `a` int)"}, use);
  ASSERT_EQ(changes.size(), 2U);
  EXPECT_EQ(changes[0].Description(),
            "Target: `a` bigint\nReference: `a` int\nUnsafe: bigint to int: values may be out of range");
  EXPECT_EQ(changes[1].Description(), "Target: `b` int\nReference: `b` int\nPlace: first");
}

// A letter that is cut off is none that a server shows as "?".
TEST(TableCases, BytesThatAreNoLetterDiffer) {
  TEquivalenceUse use;
  EXPECT_EQ(Compared({"(a varchar(4) default '\xF0\x9F\x98x')", "(a varchar(4) default '?x')"}, use).size(), 1U);
}

// Faults of every sort in texts must end in an error or in a table, which is compared with any other.
TEST(ChangesTest, StandsMutatedTexts) {
  constexpr int kRounds = 8000;
  constexpr std::string_view kBytes = "()',`\"\\;=/*!-# \n.0a\x80";
  std::mt19937 random(7);
  const auto below = [&](std::size_t bound) { return random() % bound; };
  TStringList originals;
  for (const char* name : {"mariadb_all_kinds", "mariadb_versioned", "mariadb_partitioned", "mysql5", "mysql8"})
    originals.push_back(CaseText("server_texts/" + std::string(name) + ".sql"));
  int read = 0;
  for (int round = 0; round < kRounds; ++round) {
    const std::string& original = originals[below(originals.size())];
    std::string text = original;
    for (std::size_t changes = 1 + below(3); changes > 0; --changes) {
      const std::size_t at = below(text.size());
      const std::size_t kind = below(4);
      if (kind == 0) text[at] = kBytes[below(kBytes.size())];
      if (kind == 1) text.insert(at, 1, kBytes[below(kBytes.size())]);
      if (kind == 2) text.erase(at, 1 + below(12));
      if (kind == 3) text.insert(at, original.substr(below(original.size()), below(40)));
      if (text.empty()) text = "(";
    }
    try {
      const TTableText table = ReadTableText(text);
      const std::string written = CreationTextOf(table);
      EXPECT_EQ(CreationTextOf(ReadTableText(written)), written) << text;
      TEquivalenceUse use;
      EXPECT_TRUE(CompareTableTexts(table, table, use).empty()) << text;
      CompareTableTexts(table, ReadTableText(original), use);
      ++read;
    } catch (const EVelmora&) {
    }
  }
  EXPECT_GT(read, kRounds / 4);
}

TEST(ChangesTest, DeepBracketsAndLongTextsTakeTimeByTheirLength) {
  const std::string open(50000, '(');
  const std::string close(50000, ')');
  TEquivalenceUse use;
  EXPECT_TRUE(Compared({"(a int check " + open + "1" + close + ")", "(a int check (1))"}, use).empty());
  EXPECT_NE(MessageOf([&] { ReadTableText("create table t (a int check " + open); }), "nothing raised");
}

TEST(ChangesTest, OperatorsInARowNestNoDeeperThanBrackets) {
  const auto message = [](const char* more) {
    std::string text = "a";
    for (int i = 0; i < 20000; ++i) text += more;
    TTableText table = ReadTableText("create table t (a int, constraint c check (" + text + "))");
    const TTableText other = ReadTableText("create table t (a int, constraint c check (a))");
    return MessageOf([&] { AdoptExpressions(table, other); });
  };
  for (const char* more : {" + 1", " xor a", " = 1", " collate utf8mb4_bin"}) {
    EXPECT_TRUE(message(more).starts_with("Table t, c: whether the expression a " + std::string(more + 1))) << more;
    EXPECT_LT(message(more).size(), 500U) << more;
  }
  EXPECT_EQ(message(" or a = 2"), "nothing raised");
}

// Against the plain rule: no subsequence of more members is increasing.
TEST(ChangesTest, LongestIncreasingIsLongest) {
  std::vector<std::size_t> order(7);
  std::iota(order.begin(), order.end(), 0U);
  do {
    std::vector<std::size_t> length(order.size(), 1);
    for (std::size_t i = 0; i < order.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j)
        if (order[j] < order[i]) length[i] = std::max(length[i], length[j] + 1);
    }
    const auto places = LongestIncreasing(order);
    ASSERT_EQ(places.size(), *std::max_element(length.begin(), length.end()));
    for (std::size_t i = 1; i < places.size(); ++i) {
      ASSERT_LT(places[i - 1], places[i]);
      ASSERT_LT(order[places[i - 1]], order[places[i]]);
    }
  } while (std::next_permutation(order.begin(), order.end()));
  EXPECT_TRUE(LongestIncreasing({}).empty());
}

}  // namespace
}  // namespace velmora::testing
