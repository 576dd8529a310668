// SPDX-License-Identifier: GPL-3.0-or-later

// The two databases of a task beside their comparison: marks of production, swapping, the status bar, and what the
// window says while there are none.

#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QTabWidget>
#include <QToolBar>

#include "persist/TaskPack.h"
#include "shell/DesktopRig.h"
#include "shell/widgets/MarkBar.h"
#include "shell/windows/RunQuestion.h"
#include "util/Files.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;
using velmora::testing::TDesktopRig;
using velmora::testing::TLiveDatabase;

class ConnectionsTest : public ::testing::Test {
 protected:
  ConnectionsTest() : reference_("sides_ref"), target_("sides_tgt") { reference_.Run("create table t (a int)"); }

  // Marks the open task by its dialog.
  void Mark(ETaskColour colour, bool confirm) {
    WhenModal([=](QWidget* dialog) {
      Child<QComboBox>(*dialog, "cColour")->setCurrentIndex(static_cast<int>(colour));
      Child<QAbstractButton>(*dialog, "chkConfirmDatabase")->setChecked(confirm);
      Click(*dialog, "butOK");
    });
    rig_.Trigger("acTaskMarks");
  }
  std::string LabelText(const char* name) { return FromQt(rig_.Find<QLabel>(name)->text()); }

  TLiveDatabase reference_;
  TLiveDatabase target_;
  TDesktopRig rig_;
};

TEST_F(ConnectionsTest, MarksAreShownAndKeptWithTheTask) {
  rig_.NewTask("sides_ref", "sides_tgt");
  EXPECT_FALSE(rig_.Shown("barMark"));
  Mark(ETaskColour::Orange, false);
  EXPECT_TRUE(rig_.Shown("barMark"));
  EXPECT_EQ(LabelText("barMark"), "Target: Database sides_tgt of server localhost");
  EXPECT_EQ(rig_.Find<QLabel>("barMark")->palette().color(QPalette::Window), ColoursOf(ETaskColour::Orange).back);

  rig_.host->chosen = rig_.folder / "marked.vlt";
  rig_.Trigger("acSaveTaskAs");
  rig_.Trigger("acCloseTask");
  EXPECT_FALSE(rig_.Shown("barMark"));
  rig_.Trigger("acOpenTask");
  EXPECT_TRUE(rig_.Shown("barMark"));
  rig_.NewTask("sides_ref", "sides_tgt");
  EXPECT_FALSE(rig_.Shown("barMark")) << "a new task has none";
}

// Also in the standard dialect, which asks nothing of its own.
TEST_F(ConnectionsTest, AMarkedTaskRunsWhenTheNameWasTyped) {
  rig_.NewTask("sides_ref", "sides_tgt");
  rig_.Trigger("acAnalyze");
  Mark(ETaskColour::Red, true);
  for (const auto& [typed, may] : {std::pair("Sides_tgt", false), {"sides_tgt ", false}, {"sides_tgt", true}}) {
    WhenModal([&](QWidget* question) {
      EXPECT_THAT(FromQt(question->property("text").toString()),
                  StartsWith("Run 3 statements on database sides_tgt of server localhost?"));
      EXPECT_TRUE(Child(*question, "barMark")->isVisible());
      EXPECT_EQ(question->focusWidget(), Child(*question, "edDatabase"));
      EXPECT_FALSE(Child(*question, "bnYes")->isEnabled());
      QTest::keyClicks(question->focusWidget(), QLatin1String(typed));
      EXPECT_EQ(Child(*question, "bnYes")->isEnabled(), may) << typed;
      if (may)
        Click(*question, "bnYes");
      else
        QTest::keyClick(question->focusWidget(), Qt::Key_Return);
    });
    rig_.Trigger("acSynchronize");
    const auto engine = target_.NewEngine();
    engine->Connect();
    EXPECT_EQ(engine->TableExists("t"), may);
  }
}

TEST_F(ConnectionsTest, TheSidesChangePlacesAndTheWorkIsGone) {
  rig_.NewTask("sides_ref", "sides_tgt");
  EXPECT_TRUE(rig_.Enabled("acSwapSides"));
  rig_.Trigger("acAnalyze");
  Mark(ETaskColour::Green, false);
  const auto script = [this] { return rig_.Text("mScript"); };
  EXPECT_THAT(script(), HasSubstr("CREATE TABLE `t`"));
  const auto headings = [this] { return LabelText("pnRefH") + LabelText("pnTgtH"); };
  const std::string before = headings();
  rig_.Trigger("acSwapSides");
  EXPECT_THAT(before, AllOf(HasSubstr("Reference: localhost.sides_ref"), HasSubstr("localhost.sides_tgt")));
  EXPECT_THAT(headings(), AllOf(HasSubstr("Reference: localhost.sides_tgt"), HasSubstr("localhost.sides_ref")));
  EXPECT_THAT(LabelText("barMark"), HasSubstr("sides_ref"));
  EXPECT_THAT(script(), IsEmpty());
  EXPECT_FALSE(rig_.Enabled("acSynchronize"));
  target_.Run("create table of_target (a int)");
  rig_.Trigger("acAnalyze");
  EXPECT_THAT(script(), AllOf(HasSubstr("CREATE TABLE `of_target`"), HasSubstr("drop table t;")));

  dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>("mScript")).SetBytes("select 1;");
  dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>("mScript")).setModified(true);
  EXPECT_THAT(rig_.Ask("acSwapSides", "No"), HasSubstr("Discard it?"));
  EXPECT_THAT(headings(), HasSubstr("Reference: localhost.sides_tgt"));
  EXPECT_EQ(script(), "select 1;");
}

TEST_F(ConnectionsTest, TheQuestionHasRoomForItsTextBesideAScrollBar) {
  std::string text;
  for (int words = 0; words < 80; ++words) {
    TfmRunQuestion question({text += "a ", {}, {}, {}});
    const auto* area = question.findChild<QScrollArea*>();
    const int beside = area->sizeHint().width() - area->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    EXPECT_GE(area->sizeHint().height(), area->widget()->heightForWidth(beside)) << text;
  }
}

// Whatever would put another text into the editor, or end it.
TEST_F(ConnectionsTest, ATypedScriptIsNotLostUnasked) {
  rig_.NewTask("sides_ref", "sides_tgt", "acExactDialect");
  rig_.Trigger("acAnalyze");
  auto& script = dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>("mScript"));
  script.append(QStringLiteral("select 1;\r\n"));
  const std::string typed = rig_.Text("mScript");
  rig_.host->chosen = rig_.folder / "other.sql";
  WriteFileText(rig_.host->chosen, "select 2;\r\n");
  for (const char* command : {"acAnalyze", "acLoadScriptFromFile", "acExit"}) {
    EXPECT_THAT(rig_.Ask(command, "No"), HasSubstr("Discard it?")) << command;
    EXPECT_EQ(rig_.Text("mScript"), typed) << command;
    EXPECT_TRUE(rig_.Main().isVisible()) << command;
  }
  std::string after;
  rig_.Ask("acSynchronize", "Yes", [&after](QWidget* box) {
    after = FromQt(box->property("text").toString());
    box->close();
  });
  EXPECT_THAT(after, HasSubstr("Discard it?"));
  EXPECT_EQ(rig_.Text("mScript"), typed);
  EXPECT_THAT(rig_.Ask("acExit", "Yes"), HasSubstr("Discard it?"));
  EXPECT_FALSE(rig_.Main().isVisible());
}

TEST_F(ConnectionsTest, AReferenceThatNoScriptCanChangeStaysOne) {
  WriteFileText(rig_.folder / "t.csv", "a\tb\r\n1\t2\r\n");
  WriteFileText(
      rig_.folder / "text.vlt",
      std::string(kTaskMagic) +
          PackTask("<root><version>1.0</version><reference_engine>Text</reference_engine><reference><folder>" +
                   rig_.folder.Path() +
                   "</folder><HDR>Y</HDR><separator>,</separator></reference><target_engine>MySQL</target_engine>"
                   "<target><server>localhost</server><database>sides_tgt</database><username>root</username>"
                   "<password/><port>0</port></target></root>"));
  rig_.host->chosen = rig_.folder / "text.vlt";
  rig_.Trigger("acOpenTask");
  EXPECT_TRUE(rig_.Shown("panMain"));
  EXPECT_FALSE(rig_.Enabled("acSwapSides"));
  EXPECT_THAT(FromQt(rig_.Main().Command("acSwapSides")->toolTip()), HasSubstr("cannot become the target"));
}

TEST_F(ConnectionsTest, TheStatusBarNamesServersAndDialect) {
  for (const char* part : {"sbReference", "sbTarget", "sbDialect"}) EXPECT_FALSE(rig_.Shown(part));
  rig_.NewTask("sides_ref", "sides_tgt");
  EXPECT_THAT(LabelText("sbReference"), MatchesRegex("Reference: (MariaDB|MySQL) [0-9.]+"));
  EXPECT_THAT(LabelText("sbTarget"), MatchesRegex("Target: (MariaDB|MySQL) [0-9.]+"));
  EXPECT_TRUE(rig_.Shown("sbDialect"));
  rig_.Trigger("acCloseTask");
  EXPECT_FALSE(rig_.Shown("sbTarget"));
}

TEST_F(ConnectionsTest, WithoutATaskTheWindowSaysWhatToDo) {
  EXPECT_TRUE(rig_.Shown("lbNoTask"));
  EXPECT_FALSE(rig_.Shown("bnRecent1"));
  rig_.NewTask("sides_ref", "sides_tgt");
  rig_.host->chosen = rig_.folder / "R&D.vlt";
  rig_.Trigger("acSaveTaskAs");
  rig_.Trigger("acCloseTask");
  EXPECT_TRUE(rig_.Shown("bnRecent1"));
  EXPECT_THAT(FromQt(rig_.Find<QPushButton>("bnRecent1")->text()), HasSubstr("R&&D.vlt"));
  EXPECT_FALSE(rig_.Shown("bnRecent2"));
  Click(rig_.Main(), "bnRecent1");
  EXPECT_TRUE(rig_.Shown("panMain"));
  rig_.Trigger("acCloseTask");
  WhenModal([](QWidget* wizard) { Click(*wizard, "bnCancel"); });
  Click(rig_.Main(), "bnNewTask");
}

// What a reader of screens says of a widget that takes the keyboard.
std::string SpokenName(QWidget& widget) {
  QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(&widget);
  return spoken == nullptr ? std::string() : FromQt(spoken->text(QAccessible::Name));
}

TStringList Unnamed(const QWidget& window) {
  TStringList names;
  for (QWidget* widget : window.findChildren<QWidget*>()) {
    const bool inner = widget->objectName().startsWith(QLatin1String("qt_")) || widget->objectName().isEmpty();
    const bool taken = widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus) != 0;
    if (taken && !inner && SpokenName(*widget).empty()) names.push_back(FromQt(widget->objectName()));
  }
  return names;
}

TEST_F(ConnectionsTest, WhatTakesTheKeyboardHasANameAndDialogsEndByEscape) {
  EXPECT_THAT(Unnamed(rig_.Main()), IsEmpty());
  rig_.NewTask("sides_ref", "sides_tgt");
  rig_.Trigger("acAnalyze");
  auto* page = rig_.Find<QTabWidget>("page");
  for (int i = 0; i < page->count(); ++i) {
    page->setCurrentIndex(i);
    EXPECT_THAT(Unnamed(rig_.Main()), IsEmpty()) << i;
  }
  Mark(ETaskColour::Red, true);
  for (const char* command : {"acTaskMarks", "acOptions", "acAbout", "acDumpDB", "acNewTask", "acSynchronize"}) {
    bool came = false;
    WhenModal([&](QWidget* dialog) {
      came = true;
      EXPECT_THAT(Unnamed(*dialog), IsEmpty()) << command;
      EXPECT_LE(dialog->width(), 800) << command;
      EXPECT_LE(dialog->height(), 560) << command;
      const auto buttons = dialog->findChildren<QPushButton*>();
      EXPECT_EQ(std::ranges::count_if(buttons, &QPushButton::isDefault), 1) << command;
      ASSERT_TRUE(QTest::qWaitFor([dialog] { return dialog->focusWidget() != nullptr; })) << command;
      QTest::keyClick(dialog->focusWidget(), Qt::Key_Escape);
      EXPECT_FALSE(dialog->isVisible()) << command;
      dialog->close();
    });
    rig_.Trigger(command);
    EXPECT_TRUE(came) << command;
  }
}

// A user who has just started the program for the first time, and who knows an account and two names of databases.
class NewUserTest : public ConnectionsTest {
 protected:
  NewUserTest() {
    reference_.Run("create table changed (a int, b varchar(20))");
    target_.Run("create table changed (a int)");
  }
  void ClickOn(QWidget& widget, QPoint place = {}) {
    ASSERT_TRUE(QTest::qWaitFor([&] { return widget.isVisible() && widget.isEnabled(); }));
    ++clicks_;
    QTest::mouseClick(&widget, Qt::LeftButton, {}, place.isNull() ? widget.rect().center() : place);
  }
  // In the open list of databases.
  void ClickOnDatabase(QComboBox& list, const char* name) {
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.view()->isVisible(); }));
    const QModelIndex item = list.model()->index(list.findText(QLatin1String(name)), 0);
    QTest::qWait(QApplication::doubleClickInterval());  // as a list takes a release right after it has opened for none
    const QPoint place = list.view()->visualRect(item).center();
    QTest::mouseMove(list.view()->viewport(), place - QPoint(1, 0));
    QTest::mouseMove(list.view()->viewport(), place);
    ClickOn(*list.view()->viewport(), place);
  }
  void GoThroughWizard(QWidget& wizard) {
    const QWidget& reference = *Child(wizard, "frRefConn");
    const QWidget& target = *Child(wizard, "frTgtConn");
    QTest::keyClick(wizard.focusWidget(), Qt::Key_Tab);  // localhost stands there already
    QTest::keyClick(wizard.focusWidget(), Qt::Key_Tab);
    QTest::keyClicks(wizard.focusWidget(), QStringLiteral("root"));
    auto& list = *Child<QComboBox>(reference, "cDBMySQL");
    ClickOn(list);
    ClickOnDatabase(list, "sides_ref");
    ClickOn(*Child(wizard, "bnNext"));
    ClickOnDatabase(*Child<QComboBox>(target, "cDBMySQL"), "sides_tgt");  // it opens by itself
    ClickOn(*Child(wizard, "bnAnalyze"));
  }

  int clicks_ = 0;
};

TEST_F(NewUserTest, ComesFromStartToIdenticalInEightClicks) {
  WhenModal([this](QWidget* wizard) { GoThroughWizard(*wizard); });
  ClickOn(*rig_.Find<QWidget>("bnNewTask"));
  const auto button = [this](const char* command) {
    return rig_.Find<QToolBar>("barAnalyze")->widgetForAction(rig_.Main().Command(command));
  };
  EXPECT_FALSE(rig_.Shown("lbEqual"));
  WhenModal([this](QWidget* question) { ClickOn(*Child(*question, "bnYes")); });
  ClickOn(*button("acSynchronize"));
  EXPECT_TRUE(rig_.Shown("lbEqual"));
  EXPECT_EQ(LabelText("lbEqual"), "Databases are identical. Nothing to synchronize.");
  EXPECT_LE(clicks_, 8);
}

}  // namespace
}  // namespace velmora
