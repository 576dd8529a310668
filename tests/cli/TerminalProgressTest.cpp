// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/TerminalProgress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace velmora {
namespace {

// What stands on the line in the end.
std::string LastLine(const std::string& written) { return written.substr(written.rfind("\x1b[K") + 3); }

TEST(TerminalProgressTest, ShowsPassAndCountAndLeavesNothingBehind) {
  std::ostringstream terminal;
  TTerminalProgress progress(terminal);
  progress.ShowSimple("Connecting...");
  EXPECT_EQ(LastLine(terminal.str()), "Connecting...");
  progress.ShowTwoBars("Analyzing structure...", 4);
  progress.StartDetail("Analyzing columns", 2);
  progress.StepDetail();
  EXPECT_EQ(LastLine(terminal.str()), "[######..................]  25% Analyzing columns 1/2");
  progress.ShowOneBar("Reading tables", 0);
  EXPECT_EQ(LastLine(terminal.str()), "Reading tables") << "an empty bar is none";
  progress.Finish();
  EXPECT_EQ(LastLine(terminal.str()), "");
  const std::string written = terminal.str();
  progress.Finish();
  EXPECT_EQ(terminal.str(), written);
}

TEST(TerminalProgressTest, ManyStepsPaintABoundedNumberOfTimes) {
  std::ostringstream terminal;
  TTerminalProgress progress(terminal);
  progress.ShowTwoBars("x", 100000);
  progress.StartDetail("y", 100000);
  for (int i = 0; i < 100000; ++i) progress.StepDetail();
  EXPECT_LT(terminal.str().size(), 50000u);
  EXPECT_THAT(terminal.str(), ::testing::EndsWith("100% y 100000/100000"));
}

}  // namespace
}  // namespace velmora
