// SPDX-License-Identifier: GPL-3.0-or-later

// Runs of a script that are ended from outside.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LiveCompanion.h"

namespace velmora {
namespace {

using testing::Answer;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::TAnswer;
using testing::TLiveDatabase;

constexpr char kFirst[] = "ending after this statement; Ctrl+C again breaks it off";

class LiveInterruptTest : public testing::TLiveCompanion {
 protected:
  LiveInterruptTest() { database_.Run("create table t (a int primary key) engine=InnoDB"); }

  void StartScript(const std::string& script, const std::string& source = testing::LiveSource("processes")) {
    Start({"sync", "--dialect", "standard", "unused", source, "--script", File("script.sql", script), "--yes"});
  }
  bool Runs(const std::string& statement) {
    return Answer(database_.Connection(),
                  "select count(*) from information_schema.processlist where info like '" + statement + "%'") != "0";
  }
  void WaitUntilRunning(const std::string& statement) {
    WaitUntil(statement + " runs", [&] { return Runs(statement); });
  }
  // Sends it and waits until the companion has said `word`.
  void SignalUntil(int signal, const std::string& word) {
    Signal(signal);
    WaitUntil(word, [&] { return Told().find(word) != std::string::npos; });
  }
  std::string Rows() { return Answer(database_.Connection(), "select count(*) from t"); }

  TLiveDatabase database_{"processes"};
};

TEST_F(LiveInterruptTest, ASignalEndsARunBehindItsStatement) {
  const struct {
    std::vector<int> signals;
    const char* word;
  } cases[] = {
      {{SIGINT}, kFirst},
      {{SIGTERM}, "told to end: ending after this statement"},
      {{SIGHUP}, "told to end: ending after this statement"},
      {{SIGTERM, SIGHUP, SIGHUP, SIGTERM}, "told to end: ending after this statement"},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(Answer(database_.Connection(), "select get_lock('gate', 60)"), "1") << "the former run may be ending";
    StartScript("insert into t values (1);\ndo get_lock('gate', 60);\ninsert into t values (2);\n");
    WaitUntilRunning("do get_lock");
    for (const int signal : c.signals) SignalUntil(signal, c.word);
    EXPECT_TRUE(Runs("do get_lock"));
    database_.Run("do release_lock('gate')");
    const TAnswer answer = End();
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(answer.err, HasSubstr("velmora-cli: Cancelled\n"));
    EXPECT_THAT(answer.err, HasSubstr("2 of 3 statements ran before it and were rolled back"));
    EXPECT_EQ(Rows(), "0") << "the open rows are rolled back";
  }
}

const std::vector<std::pair<int, const char*>> kTwice = {
    {SIGINT, kFirst}, {SIGINT, "breaking this statement off; Ctrl+C again ends at once"}};

// The server is asked to break the statement off, and its answer is what the report tells.
TEST_F(LiveInterruptTest, AStatementIsBrokenOff) {
  const struct {
    std::vector<std::pair<int, const char*>> signals;
    const char* statement;
    const char* told;
    const char* rows;
  } cases[] = {
      {kTwice, "update t set a = 7 where a = 0", "1 of 3 statements ran before it and were rolled back", "1"},
      {{{SIGTERM, "it does not end: breaking it off"}},
       "update t set a = 8 where a = 0",
       "1 of 3 statements ran before it and were rolled back",
       "1"},
      {kTwice, "alter table t add b int", "1 of 3 statements ran before it and are in force", "2"},
  };
  for (const auto& c : cases) {
    database_.Run("replace into t values (0)");
    database_.Connection().StartTransaction();
    database_.Run("update t set a = 5 where a = 0");
    StartScript(std::string("insert into t values (1);\n") + c.statement + ";\ninsert into t values (2);\n");
    WaitUntilRunning(c.statement);
    for (const auto& [signal, word] : c.signals) SignalUntil(signal, word);
    const TAnswer answer = End();
    database_.Connection().Rollback();
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(answer.err,
                HasSubstr(std::string("statement 2 of 3 was cancelled at line 2, column 1: ") + c.statement));
    EXPECT_THAT(answer.err, HasSubstr("velmora-cli: Query execution was interrupted\n"));
    EXPECT_THAT(answer.err, HasSubstr(c.told));
    EXPECT_THAT(answer.err, Not(HasSubstr("not known")));
    EXPECT_FALSE(Runs(c.statement));
    EXPECT_EQ(Rows(), c.rows) << c.statement;
  }
}

// The account has no second connection to ask by, so the only one is cut.
TEST_F(LiveInterruptTest, ASecondCtrlCEndsTheRunWhereTheServerCannotBeAsked) {
  database_.Run("drop user if exists 'single'@'localhost'");
  database_.Run("create user 'single'@'localhost' with max_user_connections 1");
  database_.Run("grant all on processes.* to 'single'@'localhost'");
  database_.Connection().StartTransaction();
  database_.Run("insert into t values (5)");
  StartScript("insert into t values (1);\nalter table t add b int;\n", "mysql://single:@localhost/processes");
  WaitUntilRunning("alter table");
  SignalUntil(SIGINT, kFirst);
  SignalUntil(SIGINT, "breaking this statement off");
  const TAnswer answer = End();
  EXPECT_EQ(answer.status, 2);
  EXPECT_THAT(answer.err, HasSubstr("statement 2 of 2 was cancelled"));
  EXPECT_THAT(answer.err, HasSubstr("is lost: whether that statement took effect is not known\n"));
  EXPECT_THAT(answer.err, HasSubstr("1 of 2 statements ran before it, and whether they are in force is not known\n"));
  database_.Connection().Rollback();
  WaitUntil("the server is done with it", [&] { return !Runs("alter table"); });
  database_.Run("drop user 'single'@'localhost'");
}

}  // namespace
}  // namespace velmora
