// SPDX-License-Identifier: GPL-3.0-or-later

// The dialects of the menu Extras, and what the window does differently while the exact one is on.

#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTabWidget>
#include <QTreeView>
#include <algorithm>

#include "shell/DesktopRig.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using velmora::testing::TDesktopRig;
using velmora::testing::TLiveDatabase;

constexpr unsigned kDifferenceMarks = 0b1111000;  // of a panel: changed, new, obsolete, moved

// A pair with an unsafe change (a narrower column), one that the standard dialect does not know (a comment), and tables
// of which one text is much longer than the other.
class ExactDialectTest : public ::testing::Test {
 protected:
  ExactDialectTest() : reference_("exact_ref"), target_("exact_tgt") {
    reference_.Run("create table narrow (a int, c varchar(5)) comment 'R&D'");
    target_.Run("create table narrow (a int, c varchar(50))");
    reference_.Run("create table tall (" + Columns(300) + ")");
    target_.Run("create table tall (" + Columns(60) + ")");
    rig_.NewTask("exact_ref", "exact_tgt");
  }

  static std::string Columns(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += (i > 0 ? ", c" : "c") + std::to_string(i) + " int";
    return text;
  }
  QAction& Automatic() { return *rig_.Find<QAction>("acAutomaticDialect"); }
  QAction& Standard() { return *rig_.Find<QAction>("acStandardDialect"); }
  QAction& Exact() { return *rig_.Find<QAction>("acExactDialect"); }
  std::string InUse() { return FromQt(rig_.Find<QLabel>("sbDialect")->text()); }
  void Toggle() {
    (Exact().isChecked() ? Standard() : Exact()).trigger();
    QCoreApplication::processEvents();
  }
  // The tree of the dialect: that of the standard one is another.
  QTreeView& Tree() {
    auto* standard = rig_.Find<QTreeView>("tlActions");
    return standard->isVisible() ? *standard : *rig_.Find<QTreeView>("tlDifferences");
  }
  int Groups() { return Tree().model()->rowCount(); }
  void Focus(const char* line) {
    const QAbstractItemModel& model = *Tree().model();
    const auto flags = Qt::MatchContains | Qt::MatchRecursive;
    Tree().setCurrentIndex(model.match(model.index(0, 0), Qt::DisplayRole, QLatin1String(line), 1, flags).constFirst());
  }
  TSqlEdit& Panel(const char* name) { return dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>(name)); }
  TStringList MarkedLines(const char* panel) {
    TStringList lines;
    TSqlEdit& edit = Panel(panel);
    for (int line = 0; line < edit.lines(); ++line)
      if ((edit.markersAtLine(line) & kDifferenceMarks) != 0) lines.push_back(edit.LineBytes(line));
    return lines;
  }
  std::string Synchronize(const char* answer) { return rig_.Ask("acSynchronize", answer); }

  TLiveDatabase reference_;
  TLiveDatabase target_;
  TDesktopRig rig_;
};

TEST_F(ExactDialectTest, OneDialectIsChosenInTheMenuAndKeptInTheFile) {
  const QList<QAction*> menus = rig_.Main().menuBar()->actions();
  const auto extras =
      std::ranges::find_if(menus, [](const QAction* menu) { return menu->text() == QStringLiteral("E&xtras"); });
  ASSERT_NE(extras, menus.end());
  const QList<QAction*> items = (*extras)->menu()->actions().mid(0, 3);
  EXPECT_EQ(items, (QList<QAction*>{&Automatic(), &Standard(), &Exact()}));
  EXPECT_TRUE(Exact().isEnabled());
  EXPECT_TRUE(Standard().isChecked());

  rig_.host->chosen = rig_.folder / "exact.vlt";
  Toggle();
  EXPECT_FALSE(Standard().isChecked());
  rig_.Trigger("acSaveTaskAs");
  EXPECT_TRUE(Exact().isChecked());
  rig_.Trigger("acCloseTask");
  EXPECT_FALSE(Exact().isEnabled());
  EXPECT_TRUE(Automatic().isChecked());
  rig_.Trigger("acOpenTask");
  EXPECT_TRUE(Exact().isChecked());
  EXPECT_EQ(InUse(), "Dialect: exact");
}

TEST_F(ExactDialectTest, AutomaticIsExactForTheServersOfTodayAndSaysSo) {
  rig_.NewTask("exact_ref", "exact_tgt", "acAutomaticDialect");
  EXPECT_THAT(InUse(), StartsWith("Dialect: exact (automatic: the target's server is MariaDB "));
  const auto log = [this] { return FromQt(rig_.Find<QPlainTextEdit>("mLog")->toPlainText()); };
  EXPECT_EQ(log(), InUse());
  rig_.Trigger("acAnalyze");
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("-- " + InUse()));
  EXPECT_THAT(log(), StartsWith(InUse() + "\n"));
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("modify column `c` varchar(5)"));
}

TEST_F(ExactDialectTest, WhereTheStandardDialectEndsTheWayOnIsOneClick) {
  reference_.Run("create table answers (a enum('x','y'))");
  target_.Run("create table answers (a enum('x'))");
  EXPECT_FALSE(rig_.Shown("barAdvice"));
  EXPECT_THAT(rig_.MessageOfCommand("acAnalyze"), HasSubstr("is not a valid integer value"));
  ASSERT_TRUE(rig_.Shown("barAdvice"));
  EXPECT_THAT(FromQt(rig_.Find<QLabel>("lbAdvice")->text()), StartsWith("This server is MariaDB "));
  EXPECT_EQ(FromQt(rig_.Find<QPushButton>("bnAdvice")->text()), "Analyze in the exact dialect");
  Click(rig_.Main(), "bnAdvice");
  EXPECT_FALSE(rig_.Shown("barAdvice"));
  EXPECT_TRUE(Exact().isChecked());
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("enum('x','y')"));
}

TEST_F(ExactDialectTest, WhatOneDialectFoundIsGoneInTheOther) {
  const auto expect_nothing = [this](const char* when) {
    SCOPED_TRACE(when);
    EXPECT_EQ(Groups(), 0);
    for (const char* editor : {"mScript", "mDDLref", "mDDLtgt", "mDiffRef", "mDiffTgt"})
      EXPECT_THAT(rig_.Text(editor), IsEmpty()) << editor;
    EXPECT_TRUE(rig_.Shown("page"));
  };
  const auto analyze = [this] {
    rig_.Trigger("acAnalyze");
    Focus("narrow");
    EXPECT_THAT(rig_.Text("mScript"), Not(IsEmpty()));
  };
  analyze();
  Toggle();
  expect_nothing("standard to exact");
  EXPECT_THAT(FromQt(Tree().accessibleDescription()), HasSubstr("press F9"));
  analyze();
  Toggle();
  expect_nothing("exact to standard");
  Toggle();
  analyze();
  rig_.NewTask("exact_ref", "exact_tgt");
  expect_nothing("a new task");
}

TEST_F(ExactDialectTest, PanelsShowTheServersTextsSideBySide) {
  rig_.Trigger("acAnalyze");
  Focus("narrow");
  EXPECT_THAT(rig_.Text("mDDLref"), Not(HasSubstr("COMMENT=")));
  EXPECT_FALSE(rig_.Shown("diffView"));

  Toggle();
  rig_.Trigger("acAnalyze");
  Focus("narrow");
  EXPECT_TRUE(rig_.Shown("diffView"));
  EXPECT_FALSE(rig_.Shown("mDDLref"));
  EXPECT_THAT(FromQt(rig_.Find<QLabel>("pnDiffRefH")->text()), HasSubstr("exact_ref"));
  EXPECT_THAT(rig_.Text("mDiffRef"), HasSubstr("COMMENT='R&D'"));
  EXPECT_THAT(MarkedLines("mDiffRef"), ::testing::ElementsAre(HasSubstr("`c` varchar(5)"), HasSubstr("COMMENT='R&D'")));
  EXPECT_THAT(MarkedLines("mDiffTgt"), ::testing::ElementsAre(HasSubstr("`c` varchar(50)"), StartsWith(")")));
  rig_.Trigger("acNextPlace");
  EXPECT_EQ(FromQt(rig_.Find<QLabel>("lbPlaces")->text()), "Place 1 of 1");
  for (const auto& [action, shown] : {std::pair("options", ") ENGINE"), {"column c", "  `c`"}}) {
    Focus(action);
    int line = 0;
    int index = 0;
    Panel("mDiffTgt").getCursorPosition(&line, &index);
    EXPECT_THAT(Panel("mDiffTgt").LineBytes(line), StartsWith(shown));
  }

  Panel("mDiffTgt").setFocus();
  rig_.Trigger("acSelectAll");
  EXPECT_EQ(FromQt(Panel("mDiffTgt").selectedText()), rig_.Text("mDiffTgt"));
  QTest::keyClick(&Panel("mDiffTgt"), Qt::Key_F, Qt::ControlModifier);
  EXPECT_TRUE(rig_.Shown("barFind"));
  Toggle();
  EXPECT_TRUE(rig_.Shown("mDDLref"));
}

TEST_F(ExactDialectTest, UnsafeActionsAreAskedForAndTheRunIsAnalyzed) {
  Toggle();
  rig_.Trigger("acAnalyze");
  target_.Run("insert into narrow values (1, 'short')");
  EXPECT_THAT(Synchronize("No"),
              AllOf(StartsWith("Run 5 statements on database exact_tgt of server localhost"),
                    HasSubstr("?\n\n1 change of this script can lose data:\n- narrow: Changed column c: ")));
  EXPECT_TRUE(rig_.Enabled("acSynchronize"));
  EXPECT_GT(Groups(), 0);
  Synchronize("Yes");
  EXPECT_TRUE(rig_.Shown("lbEqual"));  // without another command
  EXPECT_THAT(FromQt(rig_.Find<QPlainTextEdit>("mLog")->toPlainText()), HasSubstr("5 statements ran on localhost."));
  EXPECT_FALSE(rig_.Enabled("acSynchronize"));
}

TEST_F(ExactDialectTest, RowsInTheWayAreAskedAboutBeforeAGeneratedScriptRuns) {
  for (TLiveDatabase* database : {&reference_, &target_}) database->Run("drop table narrow");
  reference_.Run("alter table tall add unique key u (c1)");
  target_.Run("insert into tall (c1) values (1), (1)");
  Toggle();
  rig_.Trigger("acAnalyze");
  std::string rows;
  rig_.Ask("acSynchronize", "Yes", [&rows](QWidget* box) {
    rows = FromQt(box->property("text").toString());
    box->close();
  });
  EXPECT_THAT(rows, AllOf(StartsWith("Rows of the target stand in the way"),
                          HasSubstr("\n- tall: unique key u: 2 rows with values")));
  EXPECT_GT(Groups(), 0);
}

// With the unsafe action taken out nothing is warned of; a run that fails is not analyzed.
TEST_F(ExactDialectTest, WhatIsDeletedIsNotWarnedOf) {
  Toggle();
  rig_.Trigger("acAnalyze");
  Focus("narrow");
  rig_.Trigger("acDelAction");
  EXPECT_THAT(Synchronize("Yes"), AllOf(StartsWith("Run 4 statements on database exact_tgt of server localhost?"),
                                        EndsWith("Nothing in it was found to lose data.")));
  EXPECT_EQ(Groups(), 1);  // the analysis after the run finds it again
  EXPECT_EQ(Tree().model()->index(0, 0).data().toString(), QStringLiteral("narrow"));

  Focus("narrow");
  rig_.Trigger("acDelAction");
  EXPECT_EQ(Groups(), 0);
  Panel("mScript").SetBytes("drop table tall;\r\n");  // the list is empty, the text is what counts
  EXPECT_THAT(Synchronize("No"), HasSubstr("line 1: drop table tall: "));
  Panel("mScript").SetBytes("alter tabel wrong;\r\n");
  rig_.Ask("acSynchronize", "Yes", [](QWidget* box) {
    EXPECT_THAT(FromQt(box->property("text").toString()), HasSubstr("error in your SQL syntax"));
    box->close();
  });
  EXPECT_EQ(Groups(), 0);
  EXPECT_TRUE(Panel("mScript").IsMarked(0));
}

// Nothing to do, but not identical either: the messages say why.
TEST_F(ExactDialectTest, ATableThatCannotBeComparedIsNamed) {
  for (TLiveDatabase* database : {&reference_, &target_}) {
    database->Run("drop table narrow, tall");
    database->Run("create table same (a int)");
  }
  reference_.Run("create table clash (a int)");
  target_.Run("create view clash as select a from same");
  Toggle();
  rig_.Trigger("acAnalyze");
  EXPECT_FALSE(rig_.Shown("lbEqual"));
  EXPECT_TRUE(rig_.Shown("tsMessages"));
  EXPECT_THAT(FromQt(rig_.Find<QPlainTextEdit>("mLog")->toPlainText()), HasSubstr("Skipped: table clash"));
  for (const char* command : {"acSynchronize", "acDelAction"}) EXPECT_FALSE(rig_.Enabled(command)) << command;
}

}  // namespace
}  // namespace velmora
