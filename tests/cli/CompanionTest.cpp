// SPDX-License-Identifier: GPL-3.0-or-later

// What a file of cases cannot say: help, streams of the process itself, pipes, long inputs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>

#include "support/CompanionRun.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::RunInProcess;
using testing::TAnswer;

class CompanionTest : public ::testing::Test {
 protected:
  std::string File(const std::string& name, const std::string& text) {
    WriteFileText(folder_ / name, text);
    return folder_ / name;
  }

  testing::TScratchFolder folder_;
};

TEST_F(CompanionTest, HelpAndVersionEverywhere) {
  for (const std::string command : {"", "compare", "script", "sync", "schema", "parse", "replay", "split", "rows"}) {
    TStringList arguments(command.empty() ? 0 : 1, command);
    arguments.emplace_back("--help");
    EXPECT_THAT(RunInProcess(arguments).out, HasSubstr(command.empty() ? "Subcommands" : command));
    arguments.back() = "--version";
    EXPECT_THAT(RunInProcess(arguments).out, ::testing::StartsWith("velmora-cli 2.0"));
    EXPECT_EQ(RunInProcess(arguments).status, 0);
  }
}

TEST_F(CompanionTest, TablesReadWithinTheReadingOfOthersAreABoundedChain) {
  std::string chain;
  for (int i = 0; i < 3000; ++i)
    chain += "create table t" + std::to_string(i) + " (a int comment ', alter table t" + std::to_string(i + 1) +
             " drop a', b int) type=x;\n";
  EXPECT_THAT(RunInProcess({"schema", File("chain.sql", chain)}).err, HasSubstr("is read within the reading of"));
}

// As <(command) is one: what is read once is gone.
TEST_F(CompanionTest, APasswordFromAPipeIsReadOnceForBothSides) {
  const std::string pipe = folder_ / "pipe", task = folder_ / "x.vlt";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] { WriteFileText(pipe, "sEcret9\n"); });
  EXPECT_EQ(RunInProcess({"task", "new", task, "mysql://a@h/d", "mysql://b@h/e", "--password-file", pipe}).err, "");
  writer.join();
  const std::string shown = RunInProcess({"task", "show", task, "--show-passwords"}).out;
  EXPECT_NE(shown.find("sEcret9"), shown.rfind("sEcret9"));
}

TEST_F(CompanionTest, TheProgramGivesStatusAndStreams) {
  const std::string a = File("a.sql", "create table t (\n  a varchar(40) default 'x'\n) type=InnoDB;");
  const std::string b = File("b.sql", "create table t (\n  a varchar(20) default 'x'\n) type=InnoDB;");
  const struct {
    std::string arguments;
    int status;
    std::string out, err;
  } cases[] = {
      {"compare " + a + " " + a, 0, "Databases are identical. Nothing to synchronize.\n", ""},
      // no progress where standard error is no terminal
      {"compare " + a + " " + b, 1,
       "~ t\n    ~ Changed column a\n\n1 difference in 1 table\nVerified: 0 differences left\n", ""},
      {"parse none", 2, "", "velmora-cli: Cannot read none: No such file or directory\n"},
      {"script " + a + " " + b + " >/dev/full", 2, "", "velmora-cli: cannot write to standard output\n"},
  };
  for (const auto& c : cases) {
    const std::string err = folder_ / "err";
    const TAnswer answer = testing::RunInShell(VELMORA_CLI " " + c.arguments + " 2>" + err);
    EXPECT_EQ(answer.status, c.status) << c.arguments;
    EXPECT_EQ(answer.out, c.out);
    EXPECT_EQ(ReadFileText(err), c.err);
  }
}

#ifndef __SANITIZE_ADDRESS__
TEST_F(CompanionTest, AFatalSignalLeavesAReportAndEndsTheProgram) {
  const TAnswer answer = testing::RunInShell(
      "cd " + folder_.Path() +
      " && ulimit -c 0 && mkfifo pipe.sql && exec 3<>pipe.sql && export XDG_STATE_HOME=$PWD/state"
      " && { " VELMORA_CLI
      " parse pipe.sql >out 2>err & } && "
      "until grep -Eq 'SigCgt:.*[4-7c-f]..$' /proc/$!/status; do sleep 0.05; done; "  // handlers are there
      "kill -SEGV $!; wait $!; echo status $?; cat state/velmora/crashes/velmora-cli-*");
  EXPECT_THAT(answer.out, ::testing::StartsWith("status 139\nCrash report of velmora-cli "));
  EXPECT_THAT(answer.out, HasSubstr("/velmora-cli(main+"));
  EXPECT_THAT(ReadFileText(folder_ / "err"), HasSubstr("a fatal error has ended the program"));
}
#endif

}  // namespace
}  // namespace velmora
