// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RunTelling.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TRunReport Report() {
  TRunReport report;
  report.statements = {{"insert 1", 0, 0}, {"alter table t", 0, 10}, {"insert 2", 0, 26}, {"never", 0, 40}};
  report.runs.resize(4);
  for (int i = 0; i < 3; ++i) report.runs[static_cast<std::size_t>(i)] = {ERunState::Done, 0.25, 1, 0, {}};
  report.runs[0].words = "Warning 1: a\nWarning 2: b";
  report.executed = 3;
  report.settled = 2;
  report.seconds = 3.44;
  report.ended = true;
  return report;
}

TEST(RunTellingTest, SaysHowFarARunHasCome) {
  const struct {
    bool ended, cancelled, committed;
    std::optional<std::size_t> failed;
    const char* sentence;
  } cases[] = {
      {false, false, false, {}, "Running statement 4 of 4."},
      {true, true, false, {}, "Cancelled after 3 of 4 statements, 3.4 s."},
      {true, false, false, {}, "Failed after 3 of 4 statements, 3.4 s."},
      {true, false, false, 3, "Statement 4 of 4 failed after 3.4 s."},
      {true, false, true, {}, "3 of 4 statements in 3.4 s."},
  };
  for (const auto& c : cases) {
    TRunReport report = Report();
    report.ended = c.ended;
    report.cancelled = c.cancelled;
    report.committed = c.committed;
    report.failed = c.failed;
    EXPECT_EQ(RunSentence(report), c.sentence);
  }
}

TEST(RunTellingTest, AReportHasEveryStatementWithWhatIsInForce) {
  EXPECT_EQ(RunText(Report(), "insert 1;\nalter table t;\n\ninsert 2;\n  never;\n", {"Heading"}),
            "Heading\n\n"
            "1: done, 250 ms, 1 row, in force: line 1: insert 1\n    Warning 1: a\n    Warning 2: b\n"
            "2: done, 250 ms, 1 row, in force: line 2: alter table t\n"
            "3: done, 250 ms, 1 row, rolled back: line 4: insert 2\n"
            "4: not run: line 5: never\n");
  TRunReport lost = Report();
  lost.lost = lost.committing = true;
  EXPECT_EQ(ForceWord(lost, 2), "not known");
  EXPECT_EQ(ForceWord(lost, 3), "");
}

TEST(RunTellingTest, Durations) {
  EXPECT_EQ(DurationText(0.0004), "<1 ms");
  EXPECT_EQ(DurationText(0.999), "999 ms");
  EXPECT_EQ(DurationText(59.94), "59.9 s");
  EXPECT_EQ(DurationText(125.7), "2 min 5 s");
}

}  // namespace
}  // namespace velmora
