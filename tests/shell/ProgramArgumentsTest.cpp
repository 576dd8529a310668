// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/ProgramArguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace velmora {
namespace {

TEST(ProgramArgumentsTest, AFileIsOpenedAndTheRestIsAnswered) {
  const std::string here = std::filesystem::current_path().string();
  const struct {
    TStringList arguments;
    std::string file, answer;
    int status;
  } cases[] = {
      {{}, "", "", 0},
      {{""}, "", "", 0},
      {{"/a b/c.vlt"}, "/a b/c.vlt", "", 0},
      {{"x/../c.vlt"}, here + "/c.vlt", "", 0},
      {{"--", "--version"}, here + "/--version", "", 0},
      {{"a.vlt", "b.vlt"}, "", "one task file at a time", 2},
      {{"--helf"}, "", "--helf is no option", 2},
      {{"a.vlt", "-style", "x", "--help"}, "", "Usage: velmora", 0},
      {{"--version"}, "", "velmora 2.0\n", 0},
  };
  for (const auto& c : cases) {
    const TProgramArguments read = ReadProgramArguments(c.arguments);
    EXPECT_EQ(read.task_file, c.file);
    EXPECT_EQ(read.answer.empty(), c.answer.empty()) << read.answer;
    EXPECT_THAT(read.answer, ::testing::HasSubstr(c.answer));
    EXPECT_EQ(read.status, c.status);
  }
}

}  // namespace
}  // namespace velmora
