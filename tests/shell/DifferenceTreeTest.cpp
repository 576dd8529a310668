// SPDX-License-Identifier: GPL-3.0-or-later

// The tree of differences, where the dialect's actions are ticked: by mouse and keys, with the script that follows.

#include <QComboBox>
#include <QTabWidget>

#include "shell/DesktopRig.h"
#include "shell/widgets/DifferenceTree.h"
#include "util/Files.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using velmora::testing::TDesktopRig;
using velmora::testing::TLiveDatabase;

class DifferenceTreeTest : public ::testing::Test {
 protected:
  DifferenceTreeTest() : reference_("tree_ref"), target_("tree_tgt") {
    reference_.Run("create table orders (id int, total varchar(255), note text, key k (id))");
    target_.Run("create table orders (id int, total varchar(300))");
    target_.Run("create table old (a int)");
    reference_.Run("create table fresh (a int)");
    rig_.NewTask("tree_ref", "tree_tgt", "acExactDialect");
    rig_.Trigger("acAnalyze");
    View().setFocus();
  }

  TDifferenceTree& Tree() { return dynamic_cast<TDifferenceTree&>(*rig_.Find<QWidget>("pnDifferences")); }
  TDifferenceView& View() { return Tree().View(); }
  TSqlEdit& Script() { return dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>("mScript")); }
  QTabWidget& Page() { return *rig_.Find<QTabWidget>("page"); }
  std::string Heading() { return FromQt(rig_.Find<QLabel>("lbCounts")->text()); }
  std::string Footing() { return FromQt(rig_.Find<QLabel>("lbTicked")->text()); }
  QModelIndex Line(const char* text) {
    const QModelIndexList found = View().model()->match(View().model()->index(0, 0), Qt::DisplayRole,
                                                        QLatin1String(text), 1, Qt::MatchExactly | Qt::MatchRecursive);
    EXPECT_FALSE(found.isEmpty()) << text;
    return found.value(0);
  }
  std::string Current() { return FromQt(View().currentIndex().data().toString()); }
  Qt::CheckState Check(const char* line) { return Line(line).data(Qt::CheckStateRole).value<Qt::CheckState>(); }
  void Select(std::initializer_list<const char*> lines) {
    View().selectionModel()->clear();
    for (const char* line : lines) View().selectionModel()->setCurrentIndex(Line(line), QItemSelectionModel::Select);
  }
  void Key(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) {
    QTest::keyClick(&View(), key, with);
    QCoreApplication::processEvents();
  }
  QPoint Box(const char* line) {
    QStyleOptionViewItem option;
    option.initFrom(&View());
    option.rect = View().visualRect(Line(line));
    option.features = QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDecoration;
    return View().style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, &View()).center();
  }
  std::string CaretLine(const char* editor) {
    auto& edit = dynamic_cast<TSqlEdit&>(*rig_.Find<QWidget>(editor));
    int line = 0;
    int index = 0;
    edit.getCursorPosition(&line, &index);
    return edit.LineBytes(line);
  }
  void ClickBox(const char* line) { QTest::mouseClick(View().viewport(), Qt::LeftButton, Qt::NoModifier, Box(line)); }

  TLiveDatabase reference_;
  TLiveDatabase target_;
  TDesktopRig rig_;
};

TEST_F(DifferenceTreeTest, StandsInPlaceOfTheOtherTreeAndBeginsAtTheFirstDifference) {
  EXPECT_FALSE(rig_.Shown("tlActions"));
  EXPECT_TRUE(View().isVisible());
  EXPECT_EQ(Heading(), "3 tables: 1 new, 1 obsolete, 1 changed; 2 unsafe");
  EXPECT_EQ(Current(), "fresh");
  EXPECT_THAT(rig_.Text("mDiffRef"), HasSubstr("CREATE TABLE `fresh`"));
  const QModelIndex total = Line("column total");
  EXPECT_EQ(FromQt(total.data(TDifferenceModel::kDetailRole).toString()),
            "varchar(300) -> varchar(255)  [copies the table; no writes meanwhile]");
  EXPECT_THAT(FromQt(total.data(Qt::AccessibleTextRole).toString()),
              HasSubstr("orders: Changed column total, varchar(300) -> varchar(255)  [copies the table; no writes "
                        "meanwhile], unsafe: varchar(300) to"));
  EXPECT_THAT(FromQt(total.data(Qt::ToolTipRole).toString()), HasSubstr("Unsafe: varchar(300) to varchar(255)"));
  EXPECT_EQ(FromQt(Line("orders").data(TDifferenceModel::kUnsafeRole).toString()), "1 unsafe action");

  rig_.Find<QAction>("acStandardDialect")->trigger();
  EXPECT_TRUE(rig_.Shown("tlActions"));
  EXPECT_FALSE(View().isVisible());
  for (const char* command : {"acUndoTick", "acNextDifference", "acFilterActions", "acFollow"})
    EXPECT_FALSE(rig_.Main().Command(command)->isVisible()) << command;
}

TEST_F(DifferenceTreeTest, TicksAreTakenByMouseAndKeysAndTheScriptFollows) {
  const QPoint box = View().viewport()->mapTo(&rig_.Main(), Box("column total"));
  ClickBox("column total");
  QCoreApplication::processEvents();
  EXPECT_EQ(View().viewport()->mapTo(&rig_.Main(), Box("column total")), box);  // the mouse stands where it stood
  EXPECT_EQ(Check("column total"), Qt::Unchecked);
  EXPECT_EQ(Check("orders"), Qt::PartiallyChecked);
  EXPECT_THAT(rig_.Text("mScript"), AllOf(Not(HasSubstr("varchar(255)")), HasSubstr("drop table")));
  EXPECT_EQ(Page().currentIndex(), 0);

  Select({"old", "column total", "index k"});
  Key(Qt::Key_Space);  // not all of them were ticked
  EXPECT_EQ(Check("orders"), Qt::Checked);
  Key(Qt::Key_Space);
  EXPECT_EQ(Check("old"), Qt::Unchecked);
  EXPECT_EQ(Footing(), "2 of 5 actions ticked");
  EXPECT_THAT(rig_.Text("mScript"), AllOf(Not(HasSubstr("drop table")), HasSubstr("add column `note`")));
  Select({"orders"});  // stands for its members
  Key(Qt::Key_Space);
  EXPECT_EQ(Check("orders"), Qt::Checked);
  Key(Qt::Key_Z, Qt::ControlModifier);
  Key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(Check("orders"), Qt::Checked);
  EXPECT_EQ(Check("old"), Qt::Checked);
  Key(Qt::Key_Y, Qt::ControlModifier);
  EXPECT_EQ(Check("old"), Qt::Unchecked);
  EXPECT_THAT(rig_.Text("mScript"), Not(HasSubstr("drop table")));

  rig_.host->chosen = rig_.folder / "report";
  rig_.Trigger("acSaveReport");
  EXPECT_THAT(ReadFileText(rig_.folder / "report.html"),
              AllOf(HasSubstr("Obsolete table old"), HasSubstr("(taken out of the script)"),
                    HasSubstr("add column `note`"), Not(HasSubstr("drop table"))));
}

TEST_F(DifferenceTreeTest, WhatWasLeftOutIsStillADifferenceAfterTheRun) {
  for (const char* line : {"old", "column total"}) ClickBox(line);
  rig_.Ask("acSynchronize", "Yes");
  EXPECT_FALSE(rig_.Shown("lbEqual"));
  EXPECT_EQ(Heading(), "2 tables: 1 obsolete, 1 changed; 2 unsafe");
  EXPECT_EQ(Footing(), "0 of 2 actions ticked");
  EXPECT_THAT(FromQt(rig_.Find<QLabel>("lbRun")->text()), HasSubstr(" 2 differences are left: the list shows what."));
}

TEST_F(DifferenceTreeTest, DeletedLinesGoAndComeBackAndTheNextOneIsCurrent) {
  Select({"column total", "column note"});
  Key(Qt::Key_Delete);
  EXPECT_EQ(View().model()->rowCount(Line("orders")), 1);
  EXPECT_EQ(Current(), "index k");
  EXPECT_EQ(Heading(), "3 tables: 1 new, 1 obsolete, 1 changed; 1 unsafe");
  View().selectAll();
  Key(Qt::Key_Delete);
  EXPECT_EQ(View().model()->rowCount(), 0);
  EXPECT_FALSE(rig_.Enabled("acSynchronize"));  // nothing is left to do
  Key(Qt::Key_Z, Qt::ControlModifier);
  Key(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(View().model()->rowCount(Line("orders")), 3);
  EXPECT_TRUE(rig_.Enabled("acSynchronize"));
  EXPECT_FALSE(rig_.Enabled("acUndoTick"));
}

TEST_F(DifferenceTreeTest, AScriptOfTheUsersIsNotOverwrittenUnasked) {
  std::string question = "was edited and is not saved";
  const auto answer = [&question](const char* button) {
    WhenModal([&question, button](QWidget* box) {
      EXPECT_THAT(FromQt(box->property("text").toString()), HasSubstr(question));
      for (QAbstractButton* each : box->findChildren<QAbstractButton*>())
        if (each->text().remove(QLatin1Char('&')) == QLatin1String(button)) return each->click();
    });
  };
  Script().append(QStringLiteral("-- mine\r\n"));
  answer("No");
  ClickBox("old");
  EXPECT_EQ(Check("old"), Qt::Checked);
  EXPECT_THAT(rig_.Text("mScript"), AllOf(HasSubstr("-- mine"), HasSubstr("drop table")));
  answer("Yes");
  ClickBox("old");
  EXPECT_EQ(Check("old"), Qt::Unchecked);
  EXPECT_THAT(rig_.Text("mScript"), AllOf(Not(HasSubstr("-- mine")), Not(HasSubstr("drop table"))));

  question = "is one of your own";
  rig_.host->chosen = rig_.folder / "own.sql";
  WriteFileText(rig_.host->chosen, "create table own (a int);\n");
  rig_.Trigger("acLoadScriptFromFile");
  answer("No");
  ClickBox("old");
  EXPECT_EQ(Check("old"), Qt::Unchecked);
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("table own"));
  answer("Yes");
  ClickBox("old");
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("drop table"));
  ClickBox("old");  // asks nothing
}

TEST_F(DifferenceTreeTest, TheFilterAndTheKeysFindDifferences) {
  QTest::keyClick(&rig_.Main(), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
  auto* filter = rig_.Find<QLineEdit>("edFilter");
  ASSERT_TRUE(filter->hasFocus());
  QTest::keyClicks(filter, QStringLiteral("unsafe"));
  EXPECT_EQ(Footing(), "5 of 5 actions ticked; 3 hidden (3 ticked)");
  QTest::keyClick(filter, Qt::Key_Down);
  EXPECT_TRUE(View().hasFocus());
  EXPECT_EQ(Current(), "old");
  View().selectAll();
  Key(Qt::Key_Space);  // what is not shown stays ticked
  QTest::keyClick(filter, Qt::Key_Escape);
  EXPECT_EQ(Check("orders"), Qt::PartiallyChecked);

  Select({"old"});
  QTest::keyClicks(filter, QStringLiteral("index: column:orders.n*"));
  QTest::keyClick(filter, Qt::Key_Down);
  EXPECT_EQ(Current(), "index k") << "no group";
  EXPECT_EQ(Footing(), "3 of 5 actions ticked; 3 hidden (1 ticked)");
  QTest::keyClick(filter, Qt::Key_Escape);

  Page().setCurrentIndex(2);
  std::vector<std::string> seen;
  Select({"fresh"});
  for (int i = 0; i < 5; ++i) {
    rig_.Press(Qt::Key_F8);
    seen.push_back(Current());
  }
  EXPECT_THAT(seen, ElementsAre("old", "index k", "column note", "column total", "column total"));
  EXPECT_EQ(Page().currentIndex(), 0);
  QTest::keyClick(&rig_.Main(), Qt::Key_F8, Qt::ShiftModifier);
  EXPECT_EQ(Current(), "column note");
  EXPECT_THAT(rig_.Text("mDiffRef"), HasSubstr("CREATE TABLE `orders`"));
  for (const auto& [action, line] : {std::pair("index k", "  KEY `k`"), std::pair("column note", "  `note` text")}) {
    Select({action});
    EXPECT_THAT(CaretLine("mDiffRef"), ::testing::StartsWith(line));
  }

  rig_.Find<QComboBox>("cGrouping")->setCurrentIndex(1);
  EXPECT_EQ(Current(), "orders.note");
  EXPECT_EQ(View().model()->rowCount(Line("Tables")), 2);
}

TEST_F(DifferenceTreeTest, ActionsAndStatementsLeadToEachOther) {
  const auto double_click = [this](const QPoint& place) {
    QTest::mouseDClick(View().viewport(), Qt::LeftButton, Qt::NoModifier, place);
  };
  double_click(Box("column total"));
  double_click(View().visualRect(Line("orders")).center());  // folds it
  EXPECT_EQ(Page().currentIndex(), 0);
  double_click(View().visualRect(Line("orders")).center());
  double_click(View().visualRect(Line("column total")).center());
  EXPECT_EQ(Page().currentIndex(), 2);
  EXPECT_TRUE(Script().hasFocus());
  EXPECT_THAT(CaretLine("mScript"), HasSubstr("`total` varchar(255)"));

  const TStringList lines = LinesOf(rig_.Text("mScript"));
  const auto drop = std::ranges::find_if(lines, [](const std::string& line) { return line.starts_with("drop table"); });
  emit Script().SCN_DOUBLECLICK(0, static_cast<int>(drop - lines.begin()), 0);
  QCoreApplication::processEvents();
  EXPECT_EQ(Page().currentIndex(), 0);
  EXPECT_EQ(Current(), "old");

  Key(Qt::Key_Space);
  Key(Qt::Key_Return);
  EXPECT_EQ(Page().currentIndex(), 0);  // it has no statement
  Select({"index k"});
  rig_.Press(Qt::Key_F12);
  EXPECT_THAT(CaretLine("mScript"), HasSubstr("`k`"));
  rig_.Press(Qt::Key_F12);
  EXPECT_EQ(Current(), "index k");
}

}  // namespace
}  // namespace velmora
