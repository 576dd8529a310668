// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Journal.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "support/SizeLimit.h"
#include "util/Files.h"

namespace velmora {
namespace {

// The end of the run may find room again, and whoever goes on by the journal reads whole lines.
TEST(JournalTest, ALineThatHasNoRoomLeavesNoPart) {
  testing::TScratchFolder folder;
  TRunReport report;
  report.statements.push_back({"alter table t add a int"});
  report.runs.resize(1);
  report.runs[0].state = ERunState::Running;
  for (rlim_t size = 20; size < 200; size += 20) {
    const std::string path = folder / std::to_string(size);
    {
      TJournal journal(path, "t", SystemClock());
      const testing::TSizeLimit full(size);
      EXPECT_EQ(testing::MessageOf([&] { journal.Told(report); }), "Cannot write journal " + path + ": File too large");
    }
    const std::string text = ReadFileText(path);
    EXPECT_TRUE(text.empty() || text.ends_with("\n")) << text;
  }
}

}  // namespace
}  // namespace velmora
