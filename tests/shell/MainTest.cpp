// SPDX-License-Identifier: GPL-3.0-or-later
#include <QElapsedTimer>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimer>
#include <climits>
#include <filesystem>

#include "engines/oledb/DBConnDBF.h"
#include "persist/TaskDocument.h"
#include "shell/DesktopRig.h"
#include "shell/windows/Commands.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using velmora::testing::TDesktopRig;
using velmora::testing::TLiveDatabase;

// A pair whose default script the servers of today take: a changed, a new and an obsolete table.
class MainTest : public ::testing::Test {
 protected:
  MainTest() : reference_("main_ref"), target_("main_tgt") {
    reference_.Run("create table changed (a int not null, c bigint not null, b varchar(20) not null) engine=InnoDB");
    reference_.Run("create table fresh (a int not null) engine=InnoDB");
    reference_.Run("create table same (a int not null) engine=InnoDB");
    target_.Run("create table changed (a int not null, c int not null) engine=InnoDB");
    target_.Run("create table same (a int not null) engine=InnoDB");
    target_.Run("create table gone (a int not null) engine=InnoDB");
  }

  void OpenPair() { rig_.NewTask("main_ref", "main_tgt"); }
  QTreeWidget& Tree() { return *rig_.Find<QTreeWidget>("tlActions"); }
  TStringList TreeTexts() {
    TStringList texts;
    for (QTreeWidgetItemIterator item(&Tree()); *item != nullptr; ++item)
      texts.push_back(((*item)->parent() != nullptr ? "  " : "") + FromQt((*item)->text(0)));
    return texts;
  }
  QTreeWidgetItem* Item(const char* text) {
    const auto items = Tree().findItems(QLatin1String(text), Qt::MatchExactly | Qt::MatchRecursive);
    return items.isEmpty() ? nullptr : items.first();
  }
  std::string CurrentPage() { return FromQt(rig_.Find<QTabWidget>("page")->currentWidget()->objectName()); }

  TLiveDatabase reference_;
  TLiveDatabase target_;
  TDesktopRig rig_;
};

TEST_F(MainTest, StatesFollowTaskAndAnalysis) {
  struct TState {
    const char* name;
    bool no_task, panel, page, equal, task_commands, act, run;
  };
  const auto expect = [this](const TState& state) {
    SCOPED_TRACE(state.name);
    EXPECT_EQ(rig_.Shown("lbNoTask"), state.no_task);
    EXPECT_EQ(rig_.Shown("panMain"), state.panel);
    EXPECT_EQ(rig_.Shown("barAnalyze"), state.panel);
    EXPECT_EQ(rig_.Shown("page"), state.page);
    EXPECT_EQ(rig_.Shown("lbEqual"), state.equal);
    for (const TCommand& command : Commands()) {
      const std::string name = command.name;
      if (!rig_.Main().Command(name)->isVisible()) continue;
      if (InList(name, {"acMapping", "acComparison", "acSaveReport"})) continue;  // for the exact dialect alone
      const bool ofTask = name == "acSynchronize" ? state.run : name == "acDelAction" ? state.act : state.task_commands;
      EXPECT_EQ(rig_.Enabled(command.name), command.list == ECommandList::acList || ofTask) << name;
    }
  };
  expect({"start", true, false, false, false, false, false, false});
  rig_.Press(Qt::Key_F9);  // disabled without a task
  EXPECT_EQ(rig_.Main().windowTitle(), QStringLiteral("Velmora 2.0"));

  OpenPair();
  expect({"open", false, true, true, false, true, true, false});
  EXPECT_EQ(rig_.Main().windowTitle(), QStringLiteral("Untitled - Velmora 2.0"));
  EXPECT_THAT(FromQt(rig_.Find<QLabel>("pnRefH")->text()), StartsWith(" &Reference: "));
  EXPECT_THAT(FromQt(rig_.Find<QLabel>("pnTgtH")->text()), StartsWith(" Tar&get: "));

  rig_.Press(Qt::Key_F9);
  expect({"differences", false, true, true, false, true, true, true});
  EXPECT_EQ(CurrentPage(), "tsActions");

  rig_.Trigger("acSynchronize");
  rig_.Trigger("acAnalyze");
  expect({"identical", false, true, false, true, true, false, false});
  EXPECT_EQ(rig_.Find<QLabel>("lbEqual")->text(), QStringLiteral("Databases are identical. Nothing to synchronize."));

  rig_.Trigger("acCloseTask");
  expect({"closed", true, false, false, false, false, false, false});
}

TEST_F(MainTest, AnalysisShowsTreeTextsScriptAndLog) {
  OpenPair();
  rig_.Trigger("acAnalyze");
  EXPECT_THAT(TreeTexts(), ElementsAre("gone", "changed", "  Changed column c", "  New column b", "fresh"));
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("drop table gone;\r\n"));
  EXPECT_EQ(rig_.Find<QPlainTextEdit>("mLog")->toPlainText().split(QLatin1Char('\n')).size(), 4);
  EXPECT_FALSE(rig_.Progress().isVisible());

  Tree().setCurrentItem(Item("New column b"));  // a child shows its table
  EXPECT_THAT(rig_.Text("mDDLref"), HasSubstr("b varchar(20)"));
  EXPECT_THAT(rig_.Text("mDDLtgt"), HasSubstr("c int"));
  Tree().setCurrentItem(Item("fresh"));
  EXPECT_THAT(rig_.Text("mDDLref"), HasSubstr("fresh"));
  EXPECT_THAT(rig_.Text("mDDLtgt"), IsEmpty());

  Tree().setFocus();
  rig_.Press(Qt::Key_F9);
  EXPECT_EQ(QApplication::focusWidget(), &Tree());  // an analysis does not take the keyboard away

  auto* details = rig_.Find<QWidget>("pnDetails");
  rig_.Main().resize(4000, 640);
  QCoreApplication::processEvents();
  rig_.Main().resize(1101, 640);
  QCoreApplication::processEvents();
  EXPECT_EQ(rig_.Main().width(), 1101);
  EXPECT_EQ(rig_.Find<QWidget>("pnRef")->width(), details->width() / 2);
}

TEST_F(MainTest, NothingOfAFormerPairIsLeftToRun) {
  OpenPair();
  rig_.host->chosen = rig_.folder / "other.vlt";
  rig_.Trigger("acSaveTask");
  const auto expect_nothing = [this](const char* after) {
    SCOPED_TRACE(after);
    EXPECT_THAT(TreeTexts(), IsEmpty());
    for (const char* editor : {"mScript", "mDDLref", "mDDLtgt"}) EXPECT_THAT(rig_.Text(editor), IsEmpty()) << editor;
    EXPECT_TRUE(rig_.Find<QPlainTextEdit>("mLog")->toPlainText().isEmpty());
    EXPECT_FALSE(rig_.Enabled("acSynchronize"));
  };
  const std::pair<const char*, std::function<void()>> ways[] = {
      {"New", [this] { OpenPair(); }},
      {"Open", [this] { rig_.Trigger("acOpenTask"); }},
      {"Recent", [this] { rig_.Find<QAction>("acRecent1")->trigger(); }},
      {"Close", [this] { rig_.Trigger("acCloseTask"); }}};
  for (const auto& [name, leave] : ways) {
    rig_.Trigger("acAnalyze");
    Tree().setCurrentItem(Item("gone"));
    rig_.Trigger("acSaveTask");  // the pair stays, and its work with it
    EXPECT_TRUE(rig_.Enabled("acSynchronize"));
    leave();
    expect_nothing(name);
  }
  rig_.Trigger("acOpenTask");
  expect_nothing("Open after Close");
}

TEST_F(MainTest, AScriptOfTheUsersOwnRunsWhereTheQuestionSays) {
  OpenPair();
  auto& edit = dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>("mScript"));
  QTest::keyClicks(&edit, QStringLiteral("drop table gone;"));
  EXPECT_THAT(rig_.Ask("acSynchronize", "No"), StartsWith("Run 1 statement on database main_tgt of server localhost"));
  EXPECT_TRUE(edit.isModified());
  EXPECT_THAT(rig_.Ask("acCloseTask", "No"), HasSubstr("not saved"));
  EXPECT_EQ(rig_.Text("mScript"), "drop table gone;");

  rig_.host->chosen = rig_.folder / "own.sql";
  rig_.Trigger("acSaveScriptToFile");
  rig_.Trigger("acCloseTask");  // asks nothing any more
  rig_.Trigger("acLoadScriptFromFile");
  EXPECT_FALSE(rig_.Enabled("acSynchronize"));  // there is no target
  OpenPair();
  rig_.Press(Qt::Key_F9);
  rig_.Trigger("acSynchronize");
  rig_.Press(Qt::Key_F9);
  EXPECT_FALSE(rig_.Enabled("acSynchronize"));  // identical
  WriteFileText(rig_.host->chosen, "create table extra (a int);\n");
  rig_.Trigger("acLoadScriptFromFile");
  EXPECT_TRUE(rig_.Shown("mScript"));
  EXPECT_THAT(rig_.Ask("acSynchronize", "Yes"), HasSubstr("main_tgt"));
  EXPECT_THAT(FromQt(rig_.Main().statusBar()->currentMessage()), StartsWith("1 statement ran on localhost.main_tgt"));
  rig_.Press(Qt::Key_F9);
  EXPECT_THAT(TreeTexts(), ElementsAre("extra"));
}

TEST_F(MainTest, AReferenceWithoutTablesIsAskedAboutOnce) {
  reference_.Run("drop table changed, fresh, same");
  OpenPair();
  EXPECT_THAT(rig_.Ask("acAnalyze", "No"),
              ::testing::ContainsRegex("^database main_ref of server localhost.* has no tables"));
  EXPECT_THAT(TreeTexts(), IsEmpty());
  EXPECT_EQ(rig_.Text("mScript") + FromQt(rig_.Find<QPlainTextEdit>("mLog")->toPlainText()), "");
  EXPECT_FALSE(rig_.Enabled("acSynchronize"));
  rig_.Ask("acAnalyze", "Yes");
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("drop table same;"));
  rig_.Trigger("acAnalyze");
  EXPECT_TRUE(rig_.Enabled("acSynchronize"));
}

TEST_F(MainTest, DeletedActionsLeaveTheScript) {
  OpenPair();
  EXPECT_EQ(rig_.MessageOfCommand("acDelAction"), "Please select action before deletion");
  rig_.Trigger("acAnalyze");
  Tree().setCurrentItem(Item("New column b"));
  rig_.Trigger("acDelAction");
  EXPECT_EQ(Item("New column b"), nullptr);
  EXPECT_THAT(rig_.Text("mScript"), ::testing::Not(HasSubstr("add b ")));
  Tree().setFocus();
  Tree().setCurrentItem(Item("changed"));
  for (int presses = 0; presses < 3; ++presses) QTest::keyClick(QApplication::focusWidget(), Qt::Key_Delete);
  EXPECT_THAT(TreeTexts(), IsEmpty());
  EXPECT_EQ(CurrentPage(), "tsActions");
  EXPECT_EQ(QApplication::focusWidget(), &Tree());
  EXPECT_THAT(rig_.Text("mScript"), StartsWith("--Script created"));
  EXPECT_FALSE(rig_.Shown("lbEqual"));  // only an analysis brings it up
  EXPECT_EQ(rig_.MessageOfCommand("acDelAction"), "Please select action before deletion");
}

// The column has left the target's structure with the first script: the next one breaks off there.
TEST_F(MainTest, AScriptThatBrokeOffRunsOnlyWhenAsked) {
  target_.Run("alter table changed add old int");
  OpenPair();
  rig_.Trigger("acAnalyze");
  Tree().setCurrentItem(Item("gone"));
  EXPECT_THAT(rig_.MessageOfCommand("acDelAction"), HasSubstr("Can't find field old"));
  EXPECT_THAT(rig_.Ask("acSynchronize", "No"), StartsWith("Run "));
}

// Long work lets window messages run: what they bring must not free or change what it works on.
TEST_F(MainTest, WhileACommandRunsNoOtherDoesAndTheWindowStays) {
  OpenPair();
  for (const char* command : {"acAnalyze", "acDelAction", "acSynchronize"}) {
    SCOPED_TRACE(command);
    if (Item("New column b") != nullptr) Tree().setCurrentItem(Item("New column b"));
    bool running = true;
    int times = 0;
    QTimer user;
    user.callOnTimeout([&] {
      if (!running) return;
      ++times;
      rig_.Progress().close();  // which gives the window back to the user
      for (const char* other : {"acCloseTask", "acAnalyze", "acDelAction", "acExit"})
        rig_.Main().Command(other)->trigger();
      rig_.Find<QAction>("acExactDialect")->trigger();
      rig_.Main().close();
    });
    user.start(0);
    rig_.Main().Command(command)->trigger();
    running = false;
    EXPECT_GT(times, 0);
    EXPECT_TRUE(rig_.Main().isVisible());
    EXPECT_TRUE(rig_.Shown("panMain"));
    EXPECT_FALSE(rig_.Find<QAction>("acExactDialect")->isChecked());
  }
  EXPECT_THAT(TreeTexts(), ElementsAre("gone", "changed", "  Changed column c", "fresh"));
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("foreign_key_checks=1;"));
  rig_.Trigger("acExit");
  EXPECT_FALSE(rig_.Main().isVisible());
}

TEST_F(MainTest, TheWholeRoadEndsInIdenticalDatabases) {
  OpenPair();
  rig_.Press(Qt::Key_F9);
  rig_.Trigger("acSynchronize");
  EXPECT_TRUE(rig_.Enabled("acSynchronize"));
  EXPECT_THAT(TreeTexts(), ::testing::Not(IsEmpty()));  // nothing is compared again by itself
  rig_.Press(Qt::Key_F9);
  EXPECT_TRUE(rig_.Shown("lbEqual"));
}

TEST_F(MainTest, AFailedStatementIsMarkedWithTheCaretOnIt) {
  OpenPair();
  const std::string script = rig_.folder / "script.sql";
  WriteFileText(
      script, "create table made (a int);\n\n-- a comment\ncreate tabel wrong (a int);\ncreate table never (a int);\n");
  rig_.host->chosen = script;
  rig_.Trigger("acLoadScriptFromFile");
  EXPECT_EQ(CurrentPage(), "tsScript");
  EXPECT_THAT(rig_.host->asked, ElementsAre("MySQL script|*.sql"));
  std::string told;
  rig_.Ask("acSynchronize", "Yes", [&](QWidget* box) {
    told = FromQt(box->property("text").toString());
    box->close();
  });
  for (const char* line :
       {"statement 2 of 3 failed at line 4, column 1: create tabel wrong", "You have an error in your SQL syntax",
        "1 of 3 statements ran before it and are in force", "  1: create table made (a int)"}) {
    EXPECT_THAT(told, HasSubstr(line));
    EXPECT_THAT(FromQt(rig_.Find<QPlainTextEdit>("mLog")->toPlainText()), HasSubstr(line));
  }
  auto& edit = dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>("mScript"));
  int line = 0;
  int index = 0;
  edit.getCursorPosition(&line, &index);
  EXPECT_EQ(line, 3);
  EXPECT_TRUE(edit.IsMarked(3));
  EXPECT_FALSE(edit.hasSelectedText());
  const int top = static_cast<int>(edit.SendScintilla(QsciScintilla::SCI_POINTYFROMPOSITION, 0UL,
                                                      edit.SendScintilla(QsciScintilla::SCI_GETCURRENTPOS)));
  const QColor behind = edit.viewport()->grab().toImage().pixelColor(edit.viewport()->width() - 20, top + 3);
  EXPECT_GT(behind.red(), behind.blue() + 20) << "the current line hides the mark";
  for (const char* command : {"acSynchronize", "acRunScript"}) EXPECT_TRUE(rig_.Enabled(command)) << command;
  EXPECT_FALSE(rig_.Progress().isVisible());
  EXPECT_TRUE(rig_.Main().isEnabled());

  edit.SetBytes("drop table made;\r\n");
  rig_.Trigger("acRunScript");
  EXPECT_FALSE(edit.IsMarked(3));
  rig_.host->chosen = rig_.folder / "saved.sql";
  rig_.Trigger("acSaveScriptToFile");
  EXPECT_EQ(ReadFileBytes(rig_.host->chosen), "drop table made;\r\n");
}

TEST_F(MainTest, AFailedAnalysisLeavesTheEarlierState) {
  OpenPair();
  rig_.host->chosen = rig_.folder / "pair.vlt";
  rig_.Trigger("acSaveTask");
  rig_.Trigger("acAnalyze");
  const std::string script = rig_.Text("mScript");
  reference_.Run("drop database main_ref");
  EXPECT_THAT(rig_.MessageOfCommand("acAnalyze"), StartsWith("localhost.main_ref: "));
  EXPECT_TRUE(rig_.Shown("page"));
  EXPECT_FALSE(rig_.Shown("lbEqual"));
  EXPECT_TRUE(rig_.Enabled("acAnalyze"));
  EXPECT_TRUE(rig_.Find<QWidget>("panMain")->isEnabled());
  EXPECT_FALSE(rig_.Progress().isVisible());
  EXPECT_EQ(rig_.Text("mScript"), script);

  EXPECT_THAT(rig_.MessageOfCommand("acOpenTask"), StartsWith("Reference localhost.main_ref: "));
  reference_.Run("create database main_ref");

  TDBConnDBF folder(rig_.folder / "");
  WriteTask(rig_.host->chosen, folder, *rig_.Main().App().connections.target);
  rig_.Trigger("acOpenTask");
  rig_.Find<QAction>("acStandardDialect")->trigger();
  EXPECT_THAT(rig_.MessageOfCommand("acAnalyze"), HasSubstr("can be compared by the exact dialect alone"));
  EXPECT_EQ(rig_.Text("mScript"), "");
  EXPECT_THAT(TreeTexts(), IsEmpty());
}

TEST_F(MainTest, TasksAreSavedAndOpenedAgainByTheRecentList) {
  OpenPair();
  rig_.host->chosen = rig_.folder / "R&D.vlt";
  rig_.Trigger("acSaveTask");  // untitled, so it asks
  EXPECT_THAT(rig_.host->asked, ElementsAre("Velmora tasks|*.vlt"));
  EXPECT_EQ(rig_.Main().windowTitle(), QStringLiteral("R&D - Velmora 2.0"));
  rig_.Main().close();
  rig_.Start();

  auto* recent = rig_.Find<QAction>("acRecent1");
  EXPECT_TRUE(recent->isVisible());
  EXPECT_FALSE(rig_.Find<QAction>("acRecent2")->isVisible());
  EXPECT_EQ(FromQt(recent->text()), "&1 " + (rig_.folder / "R&&D.vlt"));
  recent->trigger();
  EXPECT_TRUE(rig_.Shown("panMain"));
  rig_.Trigger("acSaveTask");  // no question: it has a name
  EXPECT_THAT(rig_.host->asked, IsEmpty());

  rig_.host->chosen = rig_.folder / "none.vlt";
  EXPECT_THAT(rig_.MessageOfCommand("acOpenTask"), HasSubstr("none.vlt"));
  EXPECT_TRUE(rig_.Shown("lbNoTask"));
}

TEST_F(MainTest, TheTaskThatTheProgramIsStartedWithIsOpened) {
  OpenPair();
  rig_.host->chosen = rig_.folder / "given.vlt";
  rig_.Trigger("acSaveTask");
  rig_.Main().close();
  rig_.Start(rig_.folder / "given.vlt");
  EXPECT_TRUE(rig_.Shown("panMain"));
  EXPECT_EQ(rig_.Main().windowTitle(), QStringLiteral("given - Velmora 2.0"));

  rig_.Main().close();
  std::string text;
  WhenModal([&text](QWidget* box) {
    text = FromQt(box->property("text").toString());
    box->close();
  });
  rig_.Start(rig_.folder / "none.vlt");
  EXPECT_THAT(text, HasSubstr("none.vlt"));
  EXPECT_TRUE(rig_.Shown("lbNoTask"));
}

TEST_F(MainTest, HowTheListIsArrangedIsKept) {
  rig_.Find<QComboBox>("cGrouping")->setCurrentIndex(1);
  rig_.Find<QComboBox>("cSorting")->setCurrentIndex(1);
  rig_.Main().close();
  rig_.Start();
  EXPECT_EQ(rig_.Find<QComboBox>("cGrouping")->currentText(), QStringLiteral("By kind"));
  EXPECT_EQ(rig_.Find<QComboBox>("cSorting")->currentText(), QStringLiteral("By order of running"));
}

TEST_F(MainTest, ALatestTaskThatIsAwayIsToldOfAndKept) {
  OpenPair();
  rig_.Find<QAction>("acAutomaticDialect")->trigger();
  rig_.host->chosen = rig_.folder / "latest.vlt";
  rig_.Trigger("acSaveTask");
  WhenModal([](QWidget* dialog) {
    dialog->findChild<QAbstractButton*>(QStringLiteral("chkConnectOnStartup"))->click();
    QTest::keyClick(dialog, Qt::Key_Return);
  });
  rig_.Trigger("acOptions");
  const auto start_again = [this] {
    rig_.Main().close();
    rig_.Start();
    QCoreApplication::processEvents();
  };
  start_again();
  EXPECT_TRUE(rig_.Shown("panMain"));
  std::filesystem::remove(rig_.folder / "latest.vlt");
  start_again();
  EXPECT_THAT(FromQt(rig_.Main().statusBar()->currentMessage()), HasSubstr("latest.vlt"));
  EXPECT_TRUE(rig_.Shown("lbNoTask"));
  EXPECT_TRUE(rig_.Shown("bnRecent1"));
}

TEST_F(MainTest, WhatAConnectionSaysStandsInTheLogOnce) {
  OpenPair();
  dynamic_cast<TDBConnMySQL&>(*rig_.Main().App().connections.target).GetConnectionObject().Notice("nobody has checked");
  const auto log = [this] { return FromQt(rig_.Find<QPlainTextEdit>("mLog")->toPlainText()); };
  const std::string note = "Target: nobody has checked";
  for (const char* dialect : {"acExactDialect", "acStandardDialect"}) {
    rig_.Find<QAction>(dialect)->trigger();
    EXPECT_EQ(log(), note);
  }
  for (int i = 0; i < 2; ++i) {
    rig_.Trigger("acAnalyze");
    EXPECT_THAT(log(), ::testing::MatchesRegex(note + "\n([^\n]+\n){3}[^\n]+"));
  }
  OpenPair();
  EXPECT_EQ(log(), "");
}

TEST_F(MainTest, ANewTaskKeepsTheOldPairAlive) {
  OpenPair();
  const auto connections = [this] {
    return velmora::testing::Answer(target_.Connection(),
                                    "select count(*) from information_schema.processlist where db in ('main_ref', "
                                    "'main_tgt')");
  };
  const std::string before = connections();
  OpenPair();
  EXPECT_EQ(std::stoi(connections()), std::stoi(before) + 2);
  rig_.Main().close();
  for (int i = 0; i < 100 && connections() != "2"; ++i) QTest::qWait(10);  // those of the two databases themselves
  EXPECT_EQ(connections(), "2");
}

TEST_F(MainTest, FailedConnectionsLeaveTheWizardOnItsPage) {
  std::string message;
  WhenModal([&](QWidget* wizard) {
    TDesktopRig::FillConnection(wizard, "frRefConn", "no_such_database");
    WhenModal([&](QWidget* box) {
      message = FromQt(box->property("text").toString());
      box->close();
    });
    Click(*wizard, "bnNext");
    EXPECT_TRUE(wizard->isVisible());
    Click(*wizard, "bnCancel");
  });
  rig_.Trigger("acNewTask");
  EXPECT_THAT(message, HasSubstr("no_such_database"));
  EXPECT_TRUE(rig_.Shown("lbNoTask"));
}

TEST_F(MainTest, PlaceAndOptionsAreKeptFromRunToRun) {
  EXPECT_EQ(rig_.Find<QPlainTextEdit>("mLog")->font().family(), QStringLiteral("Tahoma"));
  rig_.Main().setGeometry(40, 50, 712, 613);
  WhenModal([](QWidget* dialog) {
    dialog->findChild<QAbstractButton*>(QStringLiteral("chkVerboseLog"))->click();
    QTest::keyClick(dialog, Qt::Key_Return);
  });
  QTest::keyClick(&rig_.Main(), Qt::Key_O, Qt::AltModifier);  // its menu is never shown
  rig_.Main().close();
  rig_.Start();
  EXPECT_EQ(rig_.Main().geometry(), QRect(40, 50, 712, 613));
  EXPECT_THAT(ReadFileText(rig_.folder / "options.values"), HasSubstr("VerboseLog"));

  rig_.Main().showMaximized();
  rig_.Main().close();
  EXPECT_THAT(ReadFileText(rig_.folder / "Velmora.settings"), HasSubstr("<State>2</State>"));
  WriteFileText(rig_.folder / "Velmora.settings", "<root><Window><State>0</State><Left>5</Left></Window></root>");
  rig_.Start();  // a broken file is passed over
  EXPECT_EQ(rig_.Main().height(), rig_.Main().screen()->availableGeometry().height() * 4 / 5);
  EXPECT_TRUE(rig_.Main().screen()->geometry().contains(rig_.Main().geometry()));

  const QRect wide(0, 0, 9000, 8000);
  for (const QRect& place : {QRect(0, 0, 640, 480), QRect(50000, 40, 640, 480), QRect(40, -600, 640, 480), wide,
                             QRect(600, 500, 640, 480), QRect(INT_MIN, INT_MIN, 640, 480)}) {
    WriteFileText(rig_.folder / "Velmora.settings",
                  Format("<root><Window><State>0</State><Left>%d</Left><Top>%d</Top><Width>%d</Width>"
                         "<Height>%d</Height></Window></root>",
                         place.left(), place.top(), place.width(), place.height()));
    rig_.Start();
    EXPECT_TRUE(rig_.Main().screen()->geometry().contains(rig_.Main().geometry())) << place.left();
    EXPECT_EQ(rig_.Main().size() == QSize(640, 480), place != wide);
    const bool reached = place.topLeft() == QPoint(0, 0) || place.left() == 600;
    EXPECT_EQ(rig_.Main().testAttribute(Qt::WA_Moved), reached) << place.left();
  }
}

TEST_F(MainTest, OptionsThatCannotBeWrittenAreToldAndTheWindowCloses) {
  std::filesystem::remove(rig_.folder / "options.values");
  std::filesystem::create_directory(rig_.folder / "options.values");
  std::string message;
  WhenModal([&](QWidget* box) {
    message = FromQt(box->property("text").toString());
    box->close();
  });
  rig_.Main().close();
  EXPECT_THAT(message, HasSubstr("options.values"));
  EXPECT_FALSE(rig_.Main().isVisible());
}

TEST_F(MainTest, CommandsOfTheProgram) {
  rig_.Trigger("acVisitWeb");
  rig_.Trigger("acContactSupport");
  ASSERT_EQ(rig_.host->opened.size(), 2U);
  EXPECT_THAT(rig_.host->opened[0], StartsWith("https://"));
  EXPECT_THAT(rig_.host->opened[1], ::testing::EndsWith("?subject=Velmora%20support%20question"));

  QTest::keyClick(&rig_.Main(), Qt::Key_F1);
  QWidget* help = nullptr;
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->objectName() == QStringLiteral("fmHelp")) help = window;
  ASSERT_NE(help, nullptr);
  help->close();

  OpenPair();
  auto* script = rig_.Find<QWidget>("mScript");
  rig_.Find<QTabWidget>("page")->setCurrentWidget(rig_.Find<QWidget>("tsScript"));
  auto& edit = dynamic_cast<TSqlEdit&>(*script);
  edit.SetBytes("select 1;\r\nselect 2;\r\n");
  edit.setFocus();
  rig_.Trigger("acSelectAll");
  EXPECT_EQ(FromQt(edit.selectedText()), "select 1;\r\nselect 2;\r\n");

  WhenModal([](QWidget* dialog) { dialog->close(); });
  rig_.Trigger("acDumpDB");
}

TEST_F(MainTest, FindGoesOnFromMatchToMatch) {
  OpenPair();
  rig_.Find<QTabWidget>("page")->setCurrentWidget(rig_.Find<QWidget>("tsScript"));
  auto& edit = dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>("mScript"));
  edit.SetBytes("drop table A;\r\ndrop table b;\r\n");
  edit.setFocus();
  QTest::keyClick(&edit, Qt::Key_F, Qt::ControlModifier);
  auto* field = rig_.Find<QLineEdit>("edFind");
  ASSERT_TRUE(field->isVisible());
  const auto line = [&] {
    int found = 0;
    int index = 0;
    edit.getCursorPosition(&found, &index);
    return found;
  };
  QTest::keyClicks(field, QStringLiteral("TABLE"));
  EXPECT_EQ(FromQt(edit.selectedText()), "table");
  EXPECT_EQ(line(), 0);
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_EQ(line(), 1);
  QTest::keyClick(field, Qt::Key_Return);  // goes round
  EXPECT_EQ(line(), 0);
  QTest::keyClick(field, Qt::Key_Escape);
  EXPECT_FALSE(rig_.Shown("barFind"));
}

}  // namespace
}  // namespace velmora
