// SPDX-License-Identifier: GPL-3.0-or-later

// The files of tests/data/companion: a new case is a new file, or a few more lines in one. Beside the steps of any case
// they have
//
//   firebird NAME      a database file is made by the indented statements
//   oracle             the indented lines are what an Oracle server answers
//   environment        the indented lines are all of the environment, as in TERM=dumb
//   input              the indented lines are standard input from here on

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <map>

#include "support/CompanionRun.h"
#include "support/FakeOracle.h"
#include "support/PrivateFirebird.h"
#include "support/Transcript.h"
#include "util/Lists.h"

namespace velmora::testing {
namespace {

constexpr char kCases[] = VELMORA_SOURCE_DIR "/tests/data/companion/";
constexpr char kOracle[] = VELMORA_FAKE_CLIENTS "/oracle";

// Puts texts in the place of standard input, as pipes that somebody has written to.
class TStandardInput {
 public:
  ~TStandardInput() { Take(own_); }
  void Give(const std::string& text) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(ends[1]);
    Take(ends[0]);
  }

 private:
  static void Take(int file) {
    dup2(file, STDIN_FILENO);
    close(file);
  }

  int own_ = dup(STDIN_FILENO);
};

class CompanionCases : public ::testing::TestWithParam<std::string> {
 public:
  CompanionCases() { setenv("ORACLE_HOME", kOracle, 1); }
  ~CompanionCases() override {
    unsetenv("ORACLE_HOME");
    EXPECT_EQ(oracle_.given_out, 0);
  }

  // What a step gives.
  std::string Step(const std::string& word, const std::string& rest, const std::string& below) {
    if (word == "firebird")
      std::filesystem::copy_file(firebird_.NewDatabaseOf(rest, below), rest);
    else if (word == "environment")
      SetEnvironment(below);
    else if (word == "input")
      input_.Give(below);
    else
      AddOracleAnswers(oracle_, below);
    return below;
  }

  void SetEnvironment(const std::string& lines) {
    environment_.clear();
    for (const std::string& line : LinesOf(lines))
      environment_[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
  }

  TAnswer Run(const std::vector<std::string>& arguments, TAsk ask) {
    return RunInProcess(arguments, std::move(ask), environment_);
  }

  TFirebirdFolder firebird_;
  std::map<std::string, std::string> environment_;
  TStandardInput input_;
  TFakeOracle& oracle_ = FakeOracleOf(kOracle);
};

TEST_P(CompanionCases, PrintWhatIsWritten) {
  EXPECT_EQ(TranscriptDifference(kCases + GetParam() + ".txt", {std::bind_front(&CompanionCases::Run, this),
                                                                std::bind_front(&CompanionCases::Step, this)}),
            "");
}

INSTANTIATE_TEST_SUITE_P(Companion, CompanionCases, ::testing::ValuesIn(TranscriptNames(kCases)),
                         [](const auto& name) { return name.param; });

// A process of its own, since the library looks at its environment once.
TEST(InterbaseCompanionTest, NeedsNothingOfTheEnvironment) {
  TFirebirdFolder folder;
  const TScratchFolder home;
  std::filesystem::rename(
      folder.NewDatabase("x.fdb", {"create table T (A varchar(9))", "insert into T values ('zwölf')"}),
      folder.Path() + "/größe.fdb");
  const std::string command =
      "env -i HOME=" + home.Path() +
      " LC_ALL=C ASAN_OPTIONS=detect_leaks=0 " VELMORA_CLI " rows 'Interbase/Firebird:database=" + folder.Path() +
      "/größe.fdb;username=SYSDBA;password=' T 2>&1";
  const TAnswer answer = RunInShell(command);
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.out, "A\nzwölf\n");
  EXPECT_TRUE(std::filesystem::exists(home / ".cache/velmora/firebird")) << "lock files are the user's own";
}

}  // namespace
}  // namespace velmora::testing
