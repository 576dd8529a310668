// SPDX-License-Identifier: GPL-3.0-or-later

// Questions on a real terminal.

#include <gtest/gtest.h>

#include <cstring>

#include "cli/Terminal.h"
#include "support/ScratchFolder.h"
#include "support/TerminalRun.h"
#include "util/Errors.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::TTerminalRun;

constexpr char kAborted[] = "(aborted)";
constexpr char kUnseen[] = "Well? \r\n";  // no key is shown, and the cursor stands on a line of its own

class PromptTest : public ::testing::Test {
 protected:
  // What the program gets when `keys` are typed at a question.
  std::string Answer(const std::string& keys, bool secret) {
    const std::string file = folder_ / "answer";
    WriteFileText(file, "");
    TTerminalRun run([&] {
      try {
        WriteFileText(file, "<" + AskOnTerminal("Well? ", secret) + ">");
      } catch (const EAbort&) {
        WriteFileText(file, kAborted);
      }
      return 0;
    });
    const termios before = run.FirstSettings();
    EXPECT_TRUE(run.Await("Well? "));
    EXPECT_EQ((run.Settings().c_lflag & ECHO) == 0, secret);
    run.Type(keys);
    EXPECT_EQ(run.End(), 0);
    shown_ = run.Shown();
    const termios after = run.Settings();
    EXPECT_EQ(after.c_lflag, before.c_lflag);
    EXPECT_EQ(after.c_iflag, before.c_iflag);
    EXPECT_EQ(std::memcmp(after.c_cc, before.c_cc, sizeof after.c_cc), 0);
    return ReadFileText(file);
  }

  testing::TScratchFolder folder_;
  std::string shown_;
};

TEST_F(PromptTest, AnswersCanBeCorrectedAndSecretsAreNotShown) {
  const struct {
    const char* keys;
    const char* answer;
    const char* shown = kUnseen;
  } cases[] = {
      {"s3cret\n", "<s3cret>"},
      {"\n", "<>"},
      {"two words\r", "<two words>"},
      {"p\xC5\xBD\x7Fw\n", "<pw>"},                      // a letter of two bytes goes at once
      {"p\xE9\x9B\xAA\xF0\x9F\x98\x80\b\bw\n", "<pw>"},  // of three and four
      {"\x7F\x7Fxy\x7F\n", "<x>"},
      {"wrong\x15right\n", "<right>"},
      {"s3cret\x03", kAborted},
      {"\x04", kAborted},
      {"s3cret\x04", kAborted},
      // An open question is edited by the terminal.
      {"nn\x7Fo\n", "<no>", "Well? nn"},
      {"\n", "<>", "Well? "},
      {"\x04", kAborted, "Well? "},
  };
  for (const auto& [keys, answer, shown] : cases) {
    SCOPED_TRACE(answer);
    const bool secret = shown == kUnseen;
    EXPECT_EQ(Answer(keys, secret), answer);
    EXPECT_EQ(secret ? shown_ : shown_.substr(0, std::strlen(shown)), shown);
  }
}

}  // namespace
}  // namespace velmora
