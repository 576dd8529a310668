// SPDX-License-Identifier: GPL-3.0-or-later

// The program on a terminal, against a real server.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LiveRun.h"
#include "support/TerminalRun.h"

namespace velmora {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using testing::LiveSource;
using ::testing::StartsWith;
using testing::TLiveDatabase;
using testing::TPrivateServer;
using testing::TTerminalRun;

class LiveTerminalTest : public ::testing::Test {
 protected:
  LiveTerminalTest() : reference_("wanted"), target_("on_terminal") {
    reference_.Run("create table t (a int not null, b int not null)");
    target_.Run("create table t (a int not null)");
  }
  static std::vector<std::string> Sync() {
    return {VELMORA_CLI,
            "sync",
            "--dialect",
            "standard",
            "--color",
            "never",
            LiveSource("wanted"),
            LiveSource("on_terminal"),
            "--socket",
            TPrivateServer::Shared().Socket()};
  }
  std::string Columns() {
    return testing::Answer(target_.Connection(),
                           "select count(*) from information_schema.columns where table_schema = 'on_terminal'");
  }

  TLiveDatabase reference_, target_;
};

constexpr char kQuestion[] = "Run 3 statements on database on_terminal of server localhost? [y/N] ";

TEST_F(LiveTerminalTest, AsksAndTakesItsProgressAway) {
  const struct {
    const char* keys;
    const char* screen;  // after the question
    int status;
    const char* columns;
  } cases[] = {
      {"\n", "\nvelmora-cli: nothing was run\n", 2, "1"},
      {"\x04", "\nvelmora-cli: nothing was run\n", 2, "1"},  // the end of input is no consent
      {"no\n", "no\nvelmora-cli: nothing was run\n", 2, "1"},
      {"n\x7Fy\n", "y\n3 statements ran on localhost.on_terminal.\n", 0, "2"},
  };
  for (const auto& c : cases) {
    TTerminalRun run(Sync());
    const tcflag_t settings = run.Settings().c_lflag;
    ASSERT_TRUE(run.Await(kQuestion)) << run.Shown();
    EXPECT_THAT(run.Shown(), HasSubstr("[####")) << "the comparison has shown its progress";
    const std::string screen = TTerminalRun::Screen(run.Shown());
    EXPECT_THAT(screen, StartsWith("~ t\n    + New column b\n\n1 difference in 1 table\n")) << "it is taken away";
    EXPECT_THAT(screen, HasSubstr("\nalter table t add column b int not null;\n")) << "nobody says yes blindly";
    EXPECT_THAT(screen, EndsWith(std::string("\n") + kQuestion));
    run.Type(c.keys);
    EXPECT_EQ(run.End(), c.status);
    EXPECT_EQ(TTerminalRun::Screen(run.Shown()), screen + c.screen);
    EXPECT_EQ(run.Shown().find("Executing script... 2/") != std::string::npos, c.status == 0);
    EXPECT_EQ(run.Settings().c_lflag, settings);
    EXPECT_EQ(Columns(), c.columns);
  }
}

// The server closes connections that wait too long, and somebody has thought for longer.
TEST_F(LiveTerminalTest, AnAnswerThatCameLateFindsTheConnectionMadeAnew) {
  testing::TWitness witness(target_);
  target_.Run("set global wait_timeout = 1");
  TTerminalRun run(Sync());
  const bool asked = run.Await(kQuestion);
  target_.Run("set global wait_timeout = default");
  ASSERT_TRUE(asked) << run.Shown();
  EXPECT_TRUE(witness.NothingLeft()) << "the server has closed them";
  run.Type("y\n");
  EXPECT_EQ(run.End(), 0) << run.Shown();
  EXPECT_EQ(Columns(), "2");
}

}  // namespace
}  // namespace velmora
