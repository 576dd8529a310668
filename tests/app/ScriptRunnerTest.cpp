// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ScriptRunner.h"

#include <gtest/gtest.h>

#include "app/RunTelling.h"
#include "core/Host.h"
#include "engines/mysql/DBConnMySQL.h"
#include "support/FakeMyConnection.h"
#include "support/MessageOf.h"
#include "support/RecordingPorts.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using testing::MessageOf;

class ScriptRunnerTest : public ::testing::Test {
 protected:
  ScriptRunnerTest() {
    connections_.target =
        std::make_unique<TDBConnMySQL>(std::make_unique<testing::TFakeMyConnection>(server_), "", 3306, "d", "", "");
    server_->AddColumn("show tables", {});
    connections_.target->Connect();
    server_->TakeLog();
  }
  void Run(const std::string& text, bool use_transaction = true) {
    editor_.SetText(text);
    runner_.RunScript(editor_.Text(), {.transaction = use_transaction});
  }

  std::shared_ptr<testing::TFakeMyServer> server_ = std::make_shared<testing::TFakeMyServer>();
  TTaskConnections connections_;
  TLineEditor editor_;
  testing::TRecordingProgress progress_;
  TScriptRunner runner_{connections_, editor_, progress_};
};

TEST_F(ScriptRunnerTest, RunsEachStatementInOneTransaction) {
  Run("--header\n--second\n\nset x=0;\n\nalter table t add a int;\n");
  EXPECT_EQ(server_->TakeLog(), (TStringList{"start", "exec set x=0", "exec alter table t add a int", "commit"}));
  EXPECT_EQ(progress_.calls, (TStringList{"ShowSimple: Analyzing script...", "ShowOneBar: Executing script..., 3",
                                          "StepTotal", "StepTotal", "Finish"}));
  EXPECT_TRUE(runner_.Report().committed);
  EXPECT_EQ(runner_.Report().InForce(), 2u);
  EXPECT_TRUE(editor_.marks().empty());
}

TEST_F(ScriptRunnerTest, WithoutTransactionAndWithoutStatements) {
  Run("a;\n", false);
  EXPECT_EQ(server_->TakeLog(), TStringList{"exec a"});
  Run("");
  EXPECT_EQ(server_->TakeLog(), (TStringList{"start", "commit"}));
}

TEST_F(ScriptRunnerTest, TheFirstErrorEndsItWithCaretMarkAndRollback) {
  server_->Fail("bad", "refused");
  EXPECT_EQ(MessageOf([&] { Run("good;\ninsert 1;\n bad;\nnever;\n"); }), "refused");
  EXPECT_EQ(server_->TakeLog(), (TStringList{"start", "exec good", "exec insert 1", "exec bad", "rollback"}));
  EXPECT_EQ(progress_.calls.back(), "Finish");
  const TRunReport& report = runner_.Report();
  EXPECT_EQ(report.executed, 2u);
  ASSERT_TRUE(report.failed);
  EXPECT_EQ(report.statements[*report.failed].start, 19u) << "the true start, for whoever tells line and column";
  EXPECT_EQ(editor_.caret(), report.statements[*report.failed].position);
  EXPECT_EQ(editor_.marks(), std::vector<std::size_t>{editor_.CaretLine()});
  EXPECT_FALSE(report.committed);
}

TEST_F(ScriptRunnerTest, AChangeOfStructureEndsTheTransaction) {
  for (const char* statement : {"bad", "alter bad"}) server_->Fail(statement, "refused");
  const struct {
    const char* script;
    std::size_t in_force;
    bool nothing = false;
  } cases[] = {
      {"bad;\n", 0},
      {"alter bad;\n", 0, true},
      {"set a = 1;\nalter bad;\n", 0, true},
      {"insert 1;\nbad;\n", 0},
      {"insert 1;\nCREATE table t (a int);\ninsert 2;\nbad;\n", 3},
      {"drop table a;\nalter table b;\nrename table c;\ntruncate d;\nupdate e;\nbad;\n", 5},
      {"created 1;\nbad;\n", 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(MessageOf([&] { Run(c.script); }), "refused");
    EXPECT_EQ(runner_.Report().InForce(), c.in_force) << c.script;
    EXPECT_EQ(runner_.Report().DidNothing(), c.nothing) << c.script;
  }
}

TEST_F(ScriptRunnerTest, ALossDuringACommitLeavesItUnknown) {
  const struct {
    const char* failed;  // null: the end of the run
    bool lost, unknown;
  } cases[] = {{"alter table t", true, true},
               {"insert 2", true, false},
               {nullptr, true, true},
               {"alter table t", false, false},
               {nullptr, false, false}};
  for (const auto& c : cases) {
    TRunReport report;
    report.statements.resize(2);
    report.executed = c.failed == nullptr ? 2 : 1;
    report.committing = c.failed == nullptr;
    report.lost = c.lost;
    if (c.failed != nullptr) {
      report.failed = 1;
      report.statements[1].text = c.failed;
    }
    EXPECT_EQ(report.CommitUnknown(), c.unknown) << c.failed;
    report.committed = true;
    EXPECT_FALSE(report.CommitUnknown());
  }
}

TEST_F(ScriptRunnerTest, TheHostEndsItBetweenTwoStatements) {
  struct TCancelling : THost {
    void ProcessMessages() override {
      if (++pumped == 2) RaiseError("Cancelled");
    }
    int pumped = 0;
  } host;
  const THostGuard guard(host);
  EXPECT_EQ(MessageOf([&] { Run("a;\nb;\nc;\n"); }), "Cancelled");
  EXPECT_EQ(server_->TakeLog(), (TStringList{"start", "exec a", "exec b", "rollback"}));
  EXPECT_FALSE(runner_.Report().failed) << "no statement is to blame";
  EXPECT_EQ(runner_.Report().executed, 2u);
  EXPECT_TRUE(editor_.marks().empty());
}

// Whatever comes between the statement that takes it away and the one that makes the new one.
TEST_F(ScriptRunnerTest, WhatWasToBeReplacedIsPutBack) {
  struct TEnding : THost {
    void ProcessMessages() override { RaiseError("Cancelled"); }
  };
  const std::function<void(const TRunReport&)> journal = [](const TRunReport& report) {
    if (report.executed == 1 && !report.ended) RaiseError("disk full");
  };
  const TRunWishes wishes{
      .put_back = [](const std::string& text) { return text == "make new" ? TStringList{"make old"} : TStringList(); }};
  for (const std::string how : {"refused", "Cancelled", "disk full"}) {
    TEnding ending;
    THost usual;
    const THostGuard guard(how == "Cancelled" ? ending : usual);
    runner_.OnProgress = how == "disk full" ? journal : nullptr;
    server_->answers["make new"].error = how == "refused" ? how : "";
    EXPECT_EQ(MessageOf([&] { runner_.RunScript("drop old;\nmake new;\n", wishes); }), how);
    TStringList log = {"start", "exec drop old", "exec make new", "exec make old", "rollback"};
    if (how != "refused") log.erase(log.begin() + 2);
    EXPECT_EQ(server_->TakeLog(), log) << how;
    EXPECT_EQ(runner_.Report().failed.has_value(), how == "refused");
    const TStringList told = FailureSummary(*connections_.target, runner_.Report(), "drop old;\nmake new;\n", how);
    EXPECT_EQ(told.at(0), std::string("statement 2 of 2 ") + (how == "refused" ? "failed" : "did not run") +
                              " at line 2, column 1: make new");
    EXPECT_EQ(told.at(2), "What it was to replace was put back");
  }
  runner_.OnProgress = nullptr;
  server_->answers["set a = 1"].error = "no";  // in between
  EXPECT_EQ(MessageOf([&] { runner_.RunScript("drop old;\nset a = 1;\nmake new;\n", wishes); }), "no");
  EXPECT_EQ(server_->TakeLog(), (TStringList{"start", "exec drop old", "exec set a = 1", "exec make old", "rollback"}));
}

}  // namespace
}  // namespace velmora
