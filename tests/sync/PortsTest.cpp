// SPDX-License-Identifier: GPL-3.0-or-later

// The editor and the log that stand in where there is no window.

#include <gtest/gtest.h>

#include "support/RecordingPorts.h"
#include "sync/ScriptEditor.h"

namespace velmora::testing {
namespace {

TEST(TLineEditor, HoldsLinesWhateverEndsThem) {
  TLineEditor editor;
  EXPECT_EQ(editor.Text(), "");
  EXPECT_EQ(editor.LastLine(), "");
  editor.AddLine("a\nb\r\nc\rd");
  editor.AddLine("");
  EXPECT_EQ(editor.Lines(), (TStringList{"a", "b", "c", "d", ""}));
  EXPECT_EQ(editor.LastLine(), "");
  EXPECT_EQ(editor.Text(), "a\r\nb\r\nc\r\nd\r\n\r\n");
  editor.SetText("x\ny");
  EXPECT_EQ(editor.Text(), "x\r\ny\r\n");
}

TEST(TLineEditor, KnowsTheLineOfTheCaret) {
  TLineEditor editor;
  editor.SetCaret(5);
  EXPECT_EQ(editor.CaretLine(), 0u);
  editor.SetText("ab\n\ncd");  // lines begin at 0, 4 and 6
  const std::pair<std::size_t, std::size_t> places[] = {{0, 0}, {3, 0}, {4, 1}, {5, 1}, {6, 2}, {99, 2}};
  for (const auto& [position, line] : places) {
    editor.SetCaret(position);
    EXPECT_EQ(editor.CaretLine(), line) << position;
  }
}

TEST(TLineLog, StampsWhatHappensAndIsReplacedAsAWhole) {
  const TFixedClock clock(EncodeDate(2005, 1, 31) + EncodeTime(9, 5, 0));
  TRecordingProgress progress;
  TLineLog log(clock, progress);
  log.LogLine("Comparing...");
  EXPECT_EQ(log.Lines(), TStringList{"2005-01-31 09:05  Comparing..."});
  EXPECT_EQ(progress.calls, TStringList{"SetDetailText: Comparing..."});
  log.SetLines({"New table t"});
  EXPECT_EQ(log.Lines(), TStringList{"New table t"});
}

}  // namespace
}  // namespace velmora::testing
