// Questions on a real terminal.

#include <gmock/gmock.h>
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
    const termios before = run.Settings();
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

TEST_F(PromptTest, ASecretIsNotShownAndCanBeCorrected) {
  const struct {
    const char* keys;
    const char* answer;
  } cases[] = {
      {"s3cret\n", "<s3cret>"},
      {"\n", "<>"},
      {"two words\r", "<two words>"},
      {"p\xC5\xBD\x7Fw\n", "<pw>"},                      // a letter of two bytes goes at once
      {"p\xE9\x9B\xAA\xF0\x9F\x98\x80\b\bw\n", "<pw>"},  // of three and four
      {"\x7F\x7F"
       "ab\x7F\n",
       "<a>"},
      {"wrong\x15right\n", "<right>"},
      {"s3cret\x03", kAborted},
      {"\x04", kAborted},
      {"s3cret\x04", kAborted},
  };
  for (const auto& [keys, answer] : cases) {
    SCOPED_TRACE(answer);
    EXPECT_EQ(Answer(keys, true), answer);
    EXPECT_EQ(shown_, "Well? \r\n") << "no key is shown, and the cursor stands on a line of its own";
  }
}

TEST_F(PromptTest, AnOpenQuestionIsEditedByTheTerminal) {
  EXPECT_EQ(Answer("yn\x7F"
                   "es\n",
                   false),
            "<yes>");
  EXPECT_THAT(shown_, ::testing::StartsWith("Well? yn"));
  EXPECT_EQ(Answer("\n", false), "<>");
  EXPECT_EQ(Answer("\x04", false), kAborted);
}

}  // namespace
}  // namespace velmora
