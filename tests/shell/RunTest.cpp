// SPDX-License-Identifier: GPL-3.0-or-later

// A run as the window shows it, statements that wait, and what the user cancels.

#include <QClipboard>
#include <QElapsedTimer>
#include <QPushButton>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimer>
#include <QTreeView>

#include "persist/TaskDocument.h"
#include "shell/DesktopRig.h"
#include "shell/widgets/RunView.h"
#include "util/Files.h"
#include "util/Lists.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using velmora::testing::TDesktopRig;
using velmora::testing::TLiveDatabase;
using velmora::testing::TPrivateServer;

constexpr int kColumns[] = {1, 6, 7};  // state, in force, the server's words

class RunTest : public ::testing::Test {
 protected:
  explicit RunTest(TPrivateServer& server = TPrivateServer::Shared())
      : server_(server), reference_("run_ref", server), target_("run_tgt", server), rig_(server) {
    reference_.Run("create table one (a int, b int)");
    reference_.Run("create table two (a int, b varchar(5))");
    target_.Run("create table one (a int)");
    target_.Run("create table two (a int)");
    rig_.NewTask("run_ref", "run_tgt", "acExactDialect");
  }

  // "done, in force, " of each statement.
  TStringList Rows() {
    TStringList rows;
    const QAbstractItemModel& model = *rig_.Find<QTreeView>("lvRun")->model();
    for (int row = 0; row < model.rowCount(); ++row) {
      TStringList cells;
      for (const int column : kColumns) cells.push_back(FromQt(model.index(row, column).data().toString()));
      rows.push_back(JoinList(cells, ", "));
    }
    return rows;
  }
  std::string Heading() { return FromQt(rig_.Find<QLabel>("lbRun")->text()); }
  std::string More() { return FromQt(rig_.Find<QLabel>("lbRunMore")->text()); }
  std::string Page() { return FromQt(rig_.Find<QTabWidget>("page")->currentWidget()->objectName()); }
  std::string Status() { return FromQt(rig_.Main().statusBar()->currentMessage()); }
  void Script(const std::string& text) { dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>("mScript")).SetBytes(text); }
  std::string Run() { return rig_.Ask("acSynchronize", "Yes"); }

  // Cancels by button or key as soon as something is waited for.
  void CancelWhenWaiting(bool by_key) {
    cancel_.setInterval(20);
    QObject::connect(&cancel_, &QTimer::timeout, &cancel_, [this, by_key] {
      ++ticks_;
      if (!rig_.Progress().isVisible() || ticks_ < 25 || ticks_ > 25) return;
      if (by_key)
        QTest::keyClick(&rig_.Main(), Qt::Key_Escape);
      else
        Click(rig_.Progress(), "bnCancel");
    });
    cancel_.start();
  }

  TPrivateServer& server_;
  TLiveDatabase reference_;
  TLiveDatabase target_;
  TDesktopRig rig_;
  QTimer cancel_;
  int ticks_ = 0;
};

TEST_F(RunTest, EachStatementIsToldAndTheComparisonAfterItToo) {
  EXPECT_FALSE(rig_.Find<QTabWidget>("page")->isTabVisible(3));
  rig_.Trigger("acAnalyze");
  Run();
  EXPECT_THAT(Heading(), AllOf(HasSubstr(" statements in "), ::testing::EndsWith("The databases are identical.")));
  EXPECT_EQ(Status(), Heading());
  EXPECT_TRUE(rig_.Shown("lbEqual"));
  EXPECT_TRUE(rig_.Shown("vRun"));
  const TStringList rows = Rows();
  ASSERT_GE(rows.size(), 2u);
  for (const std::string& row : rows) EXPECT_THAT(row, StartsWith("done, in force, "));
  Click(rig_.Main(), "bnCopyRun");
  EXPECT_THAT(FromQt(QApplication::clipboard()->text()), AllOf(StartsWith(Heading()), HasSubstr("alter table `one`")));
  rig_.Trigger("acCloseTask");
  EXPECT_FALSE(rig_.Find<QTabWidget>("page")->isTabVisible(3));
}

TEST_F(RunTest, TheStatementThatFailedIsNamedWithItsPlaceAndTheServersWords) {
  Script(
      "insert into one values (1), (2);\r\nalter table one add c tinyint;\r\nupdate one set c = 1000;\r\n"
      "update one set d = 1;\r\nselect 1;\r\n");
  std::string box;
  rig_.Ask("acSynchronize", "Yes", [&box](QWidget* shown) {
    box = FromQt(shown->property("text").toString());
    shown->close();
  });
  EXPECT_THAT(box, HasSubstr("statement 3 of 5 failed at line 3, column 1"));
  EXPECT_EQ(Page(), "tsRun");
  EXPECT_EQ(Rows(), (TStringList{"done, in force, ", "done, in force, ",
                                 "failed, , Error 1264: Out of range value for column 'c' at row 1", "not run, , ",
                                 "not run, , "}));
  EXPECT_THAT(Heading(), StartsWith("Statement 3 of 5 failed after "));
  EXPECT_THAT(More(), HasSubstr("2 of 5 statements ran before it and are in force"));

  auto& list = *rig_.Find<QTreeView>("lvRun");
  EXPECT_EQ(list.currentIndex().row(), 2);
  QTest::keyClick(&list, Qt::Key_Return);
  EXPECT_EQ(Page(), "tsScript");
  int line = 0;
  int column = 0;
  dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>("mScript")).getCursorPosition(&line, &column);
  EXPECT_EQ(line, 2);

  rig_.host->chosen = rig_.folder / "report.txt";
  Click(rig_.Main(), "bnSaveRun");
  EXPECT_THAT(ReadFileText(rig_.host->chosen),
              AllOf(HasSubstr("1: done, "), HasSubstr(", 2 rows, in force: line 1: insert into one"),
                    HasSubstr("\n    Error 1264: Out of range value")));
}

TEST_F(RunTest, WhatIsLeftAloneIsNotSaidToBeUnknown) {
  reference_.Run("create sequence s");
  rig_.Trigger("acAnalyze");
  Run();
  EXPECT_THAT(Heading(), HasSubstr("what still differs: it is left alone"));
  EXPECT_EQ(Page(), "tsMessages");
}

TEST_F(RunTest, WarningsOfTheServerAreShown) {
  Script("insert ignore into two values ('x');\r\n");
  Run();
  ASSERT_EQ(Rows().size(), 1u);
  EXPECT_THAT(Rows()[0], AllOf(StartsWith("done, in force, "), HasSubstr("Warning 1366: ")));
}

// The window repaints and its timers run; the run ends, and the report says what is in force.
TEST_F(RunTest, AStatementThatWaitsForALockIsCancelled) {
  target_.Connection().StartTransaction();
  velmora::testing::Answer(target_.Connection(), "select count(*) from two");
  for (const bool by_key : {false, true}) {
    ticks_ = 0;
    Script("alter table one add c" + std::to_string(by_key) + " int;\r\nalter table two add c int;\r\nselect 1;\r\n");
    CancelWhenWaiting(by_key);
    QElapsedTimer time;
    time.start();
    Run();
    cancel_.stop();
    cancel_.disconnect();
    EXPECT_LT(time.elapsed(), 15000);
    EXPECT_GE(ticks_, 25);
    EXPECT_EQ(Rows(), (TStringList{"done, in force, ", "cancelled, , Error 1317: Query execution was interrupted",
                                   "not run, , "}));
    EXPECT_THAT(Heading(), StartsWith("Cancelled after 1 of 3 statements, "));
    EXPECT_EQ(Status(), Heading());
    EXPECT_THAT(More(), AllOf(HasSubstr("statement 2 of 3 was cancelled at line 2, column 1: alter table two"),
                              HasSubstr("1 of 3 statements ran before it and are in force")));
    EXPECT_FALSE(rig_.Progress().isVisible());
    EXPECT_TRUE(rig_.Main().isEnabled());
  }
  target_.Connection().Rollback();
  Script("select 1;\r\n");
  Run();  // on the same connection
  EXPECT_EQ(Rows(), TStringList{"done, in force, "});
}

// Another client has changed the target: nothing runs, and the way on is another comparison.
TEST_F(RunTest, ATargetThatHasMovedIsNotTouched) {
  rig_.Trigger("acAnalyze");
  target_.Run("alter table one add z int");
  std::string told;
  const auto answer = [&told](const char* button) {
    return [&told, button](QWidget* box) {
      told = FromQt(box->property("text").toString());
      for (QAbstractButton* each : box->findChildren<QAbstractButton*>())
        if (each->text().remove(QLatin1Char('&')) == QLatin1String(button)) each->click();
    };
  };
  rig_.Ask("acSynchronize", "Yes", answer("No"));
  EXPECT_THAT(told, AllOf(HasSubstr("nothing was run: table one is not as it was"), HasSubstr("Compare anew?")));
  EXPECT_THAT(Heading(), HasSubstr("Nothing was run"));
  EXPECT_THAT(More(), HasSubstr("table one is not as it was"));
  EXPECT_THAT(rig_.Text("mScript"), Not(HasSubstr("`z`")));
  rig_.Ask("acSynchronize", "Yes", answer("Yes"));
  EXPECT_EQ(Page(), "tsActions");
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("drop column `z`"));
  Run();
  EXPECT_TRUE(rig_.Shown("lbEqual"));
}

class LockWaitTest : public RunTest {
 protected:
  LockWaitTest() {
    target_.Connection().StartTransaction();
    velmora::testing::Answer(target_.Connection(), "select count(*) from two");
    rig_.Trigger("acAnalyze");
    WhenModal([](QWidget* dialog) {
      Child<QLineEdit>(*dialog, "opt_lock-wait")->setText(QStringLiteral("1"));
      Child<QLineEdit>(*dialog, "opt_retries")->setText(QStringLiteral("9"));
      Click(*dialog, "butOK");
    });
    rig_.Trigger("acComparison");
    QApplication::setActiveWindow(&rig_.Main());
  }
  // Once, as soon as the page tells who holds the lock.
  void WhenTold(const std::function<void()>& act) {
    QObject::connect(&cancel_, &QTimer::timeout, &cancel_, [this, act] {
      if (More().find(" connection ") == std::string::npos) return;
      told_ = More();
      cancel_.stop();
      act();
    });
    cancel_.start(20);
    Run();
  }

  std::string told_;
};

TEST_F(LockWaitTest, NamesWhoHoldsTheTableAndTriesAgain) {
  WhenTold([this] { target_.Connection().Rollback(); });
  EXPECT_THAT(told_, AllOf(HasSubstr("(root@localhost, Sleep for "), HasSubstr("try 2 of 10 follows in 1 second")));
  EXPECT_TRUE(rig_.Shown("lbEqual"));
  EXPECT_EQ(More(), "");
  rig_.host->chosen = rig_.folder / "waits.vlt";
  rig_.Trigger("acSaveTaskAs");
  EXPECT_EQ(ReadTaskValues(rig_.host->chosen).exact, "lock-wait 1\nretries 9");
}

TEST_F(LockWaitTest, IsCancelledBetweenTwoTries) {
  WhenTold([this] { Click(rig_.Progress(), "bnCancel"); });
  EXPECT_THAT(Heading(), StartsWith("Cancelled after "));
  EXPECT_THAT(More(), HasSubstr("was cancelled at line "));
  EXPECT_TRUE(rig_.Main().isEnabled());
  target_.Connection().Rollback();
  rig_.Trigger("acAnalyze");
  Run();
  EXPECT_TRUE(rig_.Shown("lbEqual"));
}

class RunOnOwnServerTest : public RunTest {
 protected:
  RunOnOwnServerTest() : RunTest(Own()) {}
  static TPrivateServer& Own() {
    static TPrivateServer server;
    return server;
  }
};

TEST_F(RunOnOwnServerTest, AnAnalysisOfAServerThatHangsIsCancelledAndCanBeDoneAgain) {
  server_.Freeze(true);
  CancelWhenWaiting(true);
  QElapsedTimer time;
  time.start();
  rig_.Trigger("acAnalyze");
  EXPECT_LT(time.elapsed(), 20000);
  EXPECT_THAT(Status(), StartsWith("Cancelled"));
  EXPECT_FALSE(rig_.Enabled("acSynchronize"));
  server_.Freeze(false);
  cancel_.stop();
  rig_.Trigger("acAnalyze");
  EXPECT_TRUE(rig_.Enabled("acSynchronize"));
}

TEST_F(RunOnOwnServerTest, AServerThatDiesInTheMiddleLeavesATrueReport) {
  Script("alter table one add c int;\r\ndo sleep(60);\r\nselect 1;\r\n");
  QTimer::singleShot(1500, &rig_.Main(), [this] { server_.Kill(); });
  std::string box;
  rig_.Ask("acSynchronize", "Yes", [&box](QWidget* shown) {
    box = FromQt(shown->property("text").toString());
    shown->close();
  });
  EXPECT_THAT(box,
              AllOf(HasSubstr("statement 2 of 3 failed"), HasSubstr("the connection to the target localhost.run_tgt"),
                    HasSubstr(" is lost"), HasSubstr("1 of 3 statements ran before it and are in force")));
  EXPECT_THAT(Rows()[1], StartsWith("failed, , "));
  EXPECT_THAT(rig_.MessageOfCommand("acSynchronize"), HasSubstr("run_tgt of server localhost, is lost: "));
  server_.Restart();
  Script("select 1;\r\n");
  Run();
  EXPECT_EQ(Rows(), TStringList{"done, in force, "});
}

}  // namespace
}  // namespace velmora
