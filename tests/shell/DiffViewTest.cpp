// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/DiffView.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QHelpEvent>
#include <QScrollBar>
#include <QTest>
#include <QToolTip>

#include "shell/QtEnvironment.h"
#include "shell/widgets/FindBar.h"
#include "shell/widgets/QtText.h"
#include "util/Lists.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;

// A table of many columns: `changed` of them, the 30th, goes by its type; "new" is the second.
std::string ManyColumns(const char* type, bool with_new) {
  std::string text = "CREATE TABLE `t` (\n  `c0` int(11),\n";
  if (with_new) text += "  `new` int,\n  `new_too` int,\n";
  for (int i = 1; i < 60; ++i) text += "  `c" + std::to_string(i) + "` " + (i == 30 ? type : "int") + ",\n";
  return text + "  KEY `k` (`c0`)\n) ENGINE=InnoDB";
}

class DiffViewTest : public ::testing::Test {
 protected:
  DiffViewTest() : reference_(ManyColumns("bigint", true)), target_(ManyColumns("varchar(20)", false)) {
    target_.replace(target_.find("int(11)"), 7, "int");
    view_.resize(600, 400);
    view_.show();
    view_.Show(reference_, target_, AlignTexts(reference_, target_, TEquivalenceUse()));
    Settle();
  }

  static void Settle() { QTest::qWait(20); }
  TDiffPanel& Left() { return view_.Panel(kLeft); }
  TDiffPanel& Right() { return view_.Panel(kRight); }
  // The line of the view, from its top, where a text stands.
  static long ShownAt(TDiffPanel& panel, const std::string& text) {
    const std::string before = panel.Bytes().substr(0, panel.Bytes().find(text));
    const auto line = static_cast<unsigned long>(std::count(before.begin(), before.end(), '\n'));
    return panel.SendScintilla(QsciScintilla::SCI_VISIBLEFROMDOCLINE, line);
  }
  void OnlyDifferences(bool on) {
    view_.findChild<QCheckBox*>(QStringLiteral("cbOnlyDifferences"))->setChecked(on);
    Settle();
  }
  std::string Label(const char* name) { return FromQt(view_.findChild<QLabel*>(QLatin1String(name))->text()); }
  QString NoteAt(TDiffPanel& panel, long line) {
    const QPoint place(60, static_cast<int>(line - panel.TopLine()) * panel.LineHeight() + 2);
    QHelpEvent help(QEvent::ToolTip, place, panel.viewport()->mapToGlobal(place));
    QApplication::sendEvent(panel.viewport(), &help);
    return QToolTip::text();
  }

  std::string reference_;
  std::string target_;
  TDiffView view_;
};

TEST_F(DiffViewTest, LinesStandSideBySideAndTheTextsStayWhatTheyAre) {
  for (const bool folded : {false, true}) {
    OnlyDifferences(folded);
    for (const char* column : {"`c0`", "`c1`", "`c28`", "`c30`", "`c31`", "ENGINE"})
      EXPECT_EQ(ShownAt(Left(), column), ShownAt(Right(), column)) << column;
    for (TDiffPanel* panel : {&Left(), &Right()}) {
      EXPECT_EQ(panel->Bytes(), panel == &Left() ? reference_ : target_);
      panel->selectAll();
      panel->copy();
      EXPECT_EQ(JoinList(LinesOf(FromQt(QApplication::clipboard()->text())), "\n"), panel->Bytes());
      QTest::keyClicks(panel, QStringLiteral("x"));
      EXPECT_TRUE(panel->isReadOnly());
    }
  }
  EXPECT_LT(ShownAt(Left(), "`c30`"), 20);
}

TEST_F(DiffViewTest, OneBarScrollsBothAndEachScrollsTheOther) {
  auto* bar = view_.findChild<QScrollBar*>(QStringLiteral("sbDiffVertical"));
  ASSERT_GT(bar->maximum(), 20);
  bar->setValue(20);
  EXPECT_EQ(Left().TopLine(), 20);
  EXPECT_EQ(Right().TopLine(), 20);
  Right().verticalScrollBar()->setValue(bar->maximum());
  EXPECT_EQ(Left().TopLine(), bar->maximum());
  EXPECT_EQ(bar->value(), bar->maximum());
  auto* across = view_.findChild<QScrollBar*>(QStringLiteral("sbDiffHorizontal"));
  view_.resize(200, 300);
  Settle();
  ASSERT_GT(across->maximum(), 30);
  Left().horizontalScrollBar()->setValue(30);
  EXPECT_EQ(Right().horizontalScrollBar()->value(), 30);
  EXPECT_EQ(across->value(), 30);
}

TEST_F(DiffViewTest, OneGoesFromPlaceToPlaceAndRound) {
  EXPECT_EQ(Label("lbPlaces"), "2 places");
  const struct {
    int step;
    const char* label;
    const char* column;
  } kSteps[] = {{1, "Place 1 of 2", "`new`"},
                {1, "Place 2 of 2", "`c30`"},
                {1, "Place 1 of 2", "`new`"},
                {-1, "Place 2 of 2", "`c30`"},
                {-1, "Place 1 of 2", "`new`"}};
  for (const auto& [step, label, column] : kSteps) {
    view_.GoToPlace(step);
    EXPECT_EQ(Label("lbPlaces"), label);
    EXPECT_THAT(Left().LineBytes(static_cast<int>(Left().SendScintilla(
                    QsciScintilla::SCI_LINEFROMPOSITION,
                    static_cast<unsigned long>(Left().SendScintilla(QsciScintilla::SCI_GETCURRENTPOS))))),
                HasSubstr(column));
    const long line = ShownAt(Left(), column);
    EXPECT_LT(line - Left().TopLine(), 25);
    EXPECT_GE(line, Left().TopLine());
  }
}

TEST_F(DiffViewTest, OneGoesToAnElementThatDiffers) {
  for (const auto& [item, label] : {std::pair("C30", "Place 2 of 2"), {"new_too", "Place 1 of 2"}}) {
    view_.GoToItem(item);
    EXPECT_EQ(Label("lbPlaces"), label);
  }
  for (const char* item : {"c31", "not there", ""}) view_.GoToItem(item);  // stays
  view_.GoToPlace(1);
  EXPECT_EQ(Label("lbPlaces"), "Place 2 of 2");
  view_.GoToItem("new_too");
  view_.GoToPlace(-1);  // to the begin of the place
  EXPECT_EQ(Label("lbPlaces"), "Place 1 of 2");
}

TEST_F(DiffViewTest, KeysLeadThroughItAndBothPanelsAreAsLarge) {
  Left().setFocus();
  QTest::keyClick(&Left(), Qt::Key_Tab);
  EXPECT_TRUE(Right().hasFocus());
  QTest::keyClick(&Right(), Qt::Key_Plus, Qt::ControlModifier);
  Settle();
  EXPECT_EQ(Left().LineHeight(), Right().LineHeight());
  EXPECT_EQ(ShownAt(Left(), "`c31`"), ShownAt(Right(), "`c31`"));
}

TEST_F(DiffViewTest, NotesSayWhyLinesAreMarkedOrNot) {
  EXPECT_THAT(FromQt(NoteAt(Left(), 1)), HasSubstr("display-width"));
  EXPECT_THAT(FromQt(NoteAt(Right(), 2)), HasSubstr("Only in the reference."));
  Left().SetCaretRow(1);
  Settle();
  EXPECT_THAT(Label("lbDiffNote"), HasSubstr("display-width"));  // for those without a mouse
  EXPECT_THAT(FromQt(Left().accessibleDescription()), HasSubstr("1 line changed, 2 lines only in the reference"));
}

TEST_F(DiffViewTest, FoldedLinesOpenByAClickAndWhereSomethingIsFound) {
  OnlyDifferences(true);
  const auto folds = [this] {
    return Left().SendScintilla(QsciScintilla::SCI_VISIBLEFROMDOCLINE, static_cast<unsigned long>(Left().lines() - 1));
  };
  const long folded = folds();
  TFindBar bar;
  bar.Open(Right());
  QTest::keyClicks(bar.findChild<QLineEdit*>(), QStringLiteral("c50"));
  Settle();
  EXPECT_GT(folds(), folded);
  EXPECT_EQ(ShownAt(Left(), "`c50`"), ShownAt(Right(), "`c50`"));

  OnlyDifferences(false);
  OnlyDifferences(true);
  EXPECT_EQ(folds(), folded);
  long line = 0;
  while (!NoteAt(Left(), line).contains(QStringLiteral("folded"))) ASSERT_LT(++line, folded);
  const QPoint place(80, static_cast<int>(line - Left().TopLine()) * Left().LineHeight() + 2);
  QTest::mouseClick(Left().viewport(), Qt::LeftButton, Qt::NoModifier, place);
  EXPECT_GT(folds(), folded);
}

}  // namespace
}  // namespace velmora
