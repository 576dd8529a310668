// SPDX-License-Identifier: GPL-3.0-or-later

// The files of tests/data/companion: a new case is a new file, or a few more lines in one. Beside the steps of any case
// they have
//
//   firebird NAME      a database file is made by the indented statements
//   oracle             the indented lines are what an Oracle server answers

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <functional>

#include "support/CompanionRun.h"
#include "support/FakeOracle.h"
#include "support/PrivateFirebird.h"
#include "support/Transcript.h"

namespace velmora::testing {
namespace {

constexpr char kCases[] = VELMORA_SOURCE_DIR "/tests/data/companion/";
constexpr char kOracle[] = VELMORA_FAKE_CLIENTS "/oracle";

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
    else
      AddOracleAnswers(oracle_, below);
    return below;
  }

  TFirebirdFolder firebird_;
  TFakeOracle& oracle_ = FakeOracleOf(kOracle);
};

TEST_P(CompanionCases, PrintWhatIsWritten) {
  EXPECT_EQ(
      TranscriptDifference(kCases + GetParam() + ".txt", {RunInProcess, std::bind_front(&CompanionCases::Step, this)}),
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
