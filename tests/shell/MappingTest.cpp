// SPDX-License-Identifier: GPL-3.0-or-later

// A reference that is not MySQL in the window: what it becomes, the user's own rules, and what is accepted.

#include <QCheckBox>
#include <QLabel>
#include <QMessageBox>
#include <QRadioButton>
#include <QTableView>
#include <QTreeView>
#include <QTreeWidget>

#include "shell/DesktopRig.h"
#include "support/FormatCase.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using velmora::testing::FormatCase;
using velmora::testing::TDesktopRig;
using velmora::testing::TLiveDatabase;

// A FoxPro database, one of whose checks has no form in MySQL, and an empty target.
class MappingTest : public ::testing::Test {
 protected:
  MappingTest() : target_("mapping_tgt") {
    FormatCase("foxpro-visual").PutInto(files_ / ".");
    WhenModal([this](QWidget* wizard) {
      auto* engines = Child<QComboBox>(*wizard, "cEngine");
      Child<QRadioButton>(*wizard, "cbOther")->click();
      engines->setCurrentText(QStringLiteral("FoxPro"));
      emit engines->activated(engines->currentIndex());
      auto* fields = Child<QWidget>(*wizard, "frRefConn");
      Child<QLineEdit>(*fields, "edFolder")->setText(ToQt(files_ / "."));
      Child<QLineEdit>(*fields, "edCodePage")->setText(QStringLiteral("1252"));
      TDesktopRig::FillConnection(wizard, "frTgtConn", "mapping_tgt");
      Click(*wizard, "bnNext");
      Click(*wizard, "bnNext");
    });
    rig_.Trigger("acNewTask");
    QApplication::setActiveWindow(&rig_.Main());
  }

  std::string Log() { return FromQt(rig_.Find<QPlainTextEdit>("mLog")->toPlainText()); }
  bool Identical() { return rig_.Shown("lbEqual"); }
  QTreeView& Tree() { return *rig_.Find<QTreeView>("tlDifferences"); }
  std::string HintOf(const QModelIndex& line) { return FromQt(line.data(Qt::ToolTipRole).toString()); }
  // Opens the dialog and ends it by that button.
  void InDialog(const char* button, const std::function<void(QWidget&)>& work) {
    WhenModal([&work, button](QWidget* dialog) {
      EXPECT_LE(dialog->width(), 800) << "which small screens have";
      work(*dialog);
      Click(*dialog, button);
    });
    rig_.Trigger("acMapping");
    QApplication::setActiveWindow(&rig_.Main());
  }
  static void Accept(QWidget& dialog, Qt::CheckState state) {
    Child<QTreeWidget>(dialog, "twUnmade")->topLevelItem(0)->setCheckState(0, state);
  }
  // Enters a rule for the column that the filter finds; a wrong one first, whose message it gives.
  static std::string MapTo(QWidget& dialog, const char* column, const char* wrong, const char* right) {
    std::string message;
    Child<QLineEdit>(dialog, "edMappingFilter")->setText(QLatin1String(column));
    auto* columns = Child<QTableView>(dialog, "tvColumns");
    columns->setCurrentIndex(columns->model()->index(0, 0));
    WhenModal([&](QWidget* rule) {
      auto* type = Child<QLineEdit>(*rule, "edType");
      type->setText(QLatin1String(wrong));
      WhenModal([&message](QWidget* box) {
        message = FromQt(box->property("text").toString());
        box->close();
      });
      Click(*rule, "butOK");
      type->setText(QLatin1String(right));
      Click(*rule, "butOK");
    });
    Click(dialog, "bnMapTo");
    return message;
  }

  testing::TScratchFolder files_;
  TLiveDatabase target_;
  TDesktopRig rig_;
};

TEST_F(MappingTest, WhatHasNoFormIsAcceptedByAClickAndTakenBack) {
  rig_.Trigger("acAnalyze");
  EXPECT_TRUE(rig_.Shown("barUnmade"));
  EXPECT_THAT(Log(), AllOf(HasSubstr("No form in MySQL: items.whole (check)"),
                           HasSubstr("Mapping: items: key SOME is left out")));
  const QAbstractItemModel& lines = *Tree().model();
  EXPECT_THAT(HintOf(lines.index(1, 0)), HasSubstr("no form in MySQL: whole (check)"));
  rig_.Ask("acSynchronize", "Yes");
  EXPECT_FALSE(Identical());

  InDialog("butCancel", [](QWidget& dialog) { Accept(dialog, Qt::Checked); });
  EXPECT_FALSE(Identical());
  rig_.Trigger("acCloseTask");
  EXPECT_FALSE(rig_.Shown("panMain")) << "nothing was changed, so nothing is asked";
}

TEST_F(MappingTest, RulesAndWhatIsAcceptedBelongToTheTask) {
  InDialog("butOK", [](QWidget& dialog) {
    EXPECT_EQ(Child<QTableView>(dialog, "tvColumns")->model()->rowCount(), 0) << "nothing was compared yet";
    Child<QCheckBox>(dialog, "chkLowerNames")->click();
    Child<QLineEdit>(dialog, "edCollation")->setText(QStringLiteral("utf8mb4_bin"));
  });
  rig_.Trigger("acAnalyze");
  EXPECT_THAT(rig_.Text("mScript"), AllOf(HasSubstr("`a` char(1)"), HasSubstr("COLLATE=utf8mb4_bin")))
      << "which is A in the source";
  rig_.Ask("acSynchronize", "Yes");
  InDialog("butOK", [](QWidget& dialog) { Accept(dialog, Qt::Checked); });
  EXPECT_TRUE(Identical());
  EXPECT_FALSE(rig_.Shown("barUnmade"));
  EXPECT_THAT(Log(), AllOf(HasSubstr("Accepted: 1 element without a form"), Not(HasSubstr("No form in MySQL"))));

  std::string message;
  InDialog("butOK", [&](QWidget& dialog) { message = MapTo(dialog, "order_number", "bigger", "bigint"); });
  EXPECT_EQ(message, "items.order_number=bigger: bigger is no type of MySQL's");
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("`order_number` bigint"));
  EXPECT_THAT(HintOf(Tree().model()->index(0, 0, Tree().model()->index(0, 0))), HasSubstr("In the source: I"));

  WhenModal([&message](QWidget* question) {
    message = FromQt(question->property("text").toString());
    WhenModal([](QWidget* refused) { refused->close(); });
    question->close();
  });
  rig_.Trigger("acCloseTask");
  EXPECT_THAT(message, HasSubstr("You did not save current task."));
  rig_.host->chosen = rig_.folder / "fox.vlt";
  rig_.Trigger("acSaveTaskAs");
  rig_.Trigger("acCloseTask");
  rig_.Trigger("acOpenTask");
  rig_.Trigger("acAnalyze");
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("`order_number` bigint"));
  EXPECT_FALSE(rig_.Shown("barUnmade"));

  InDialog("butOK", [](QWidget& dialog) {
    Accept(dialog, Qt::Unchecked);
    auto* rules = Child<QTreeWidget>(dialog, "twRules");
    Child<QComboBox>(dialog, "cLevel")->setCurrentText(QStringLiteral("By your rules"));
    EXPECT_EQ(Child<QTableView>(dialog, "tvColumns")->model()->rowCount(), 1);
    EXPECT_EQ(rules->topLevelItem(0)->text(2), QStringLiteral("1 column"));
    Click(dialog, "bnRemoveRule");
    EXPECT_EQ(rules->topLevelItemCount(), 0);
    EXPECT_EQ(Child<QTableView>(dialog, "tvColumns")->model()->rowCount(), 0);
  });
  EXPECT_TRUE(rig_.Shown("barUnmade"));
  EXPECT_EQ(Tree().model()->rowCount(), 0) << "int is int again";
}

TEST_F(MappingTest, AColumnIsMappedFromTheTreeAndOnlyWhereThereIsAMapping) {
  rig_.Trigger("acAnalyze");
  EXPECT_FALSE(rig_.Enabled("acMapColumn")) << "a whole table";
  rig_.Ask("acSynchronize", "Yes");
  target_.Run("alter table items modify `double` float not null");
  rig_.Trigger("acAnalyze");
  Tree().setCurrentIndex(Tree().model()->index(0, 0, Tree().model()->index(0, 0)));
  ASSERT_TRUE(rig_.Enabled("acMapColumn"));
  WhenModal([](QWidget* rule) {
    EXPECT_EQ(Child<QComboBox>(*rule, "cWhat")->currentText(), QStringLiteral("items.double"));
    Child<QLineEdit>(*rule, "edType")->setText(QStringLiteral("float"));
    Click(*rule, "butOK");
  });
  rig_.Trigger("acMapColumn");
  EXPECT_EQ(Tree().model()->rowCount(), 0);

  rig_.Find<QAction>("acStandardDialect")->trigger();
  QCoreApplication::processEvents();
  EXPECT_FALSE(rig_.Enabled("acMapping"));
  EXPECT_FALSE(rig_.Main().Command("acMapColumn")->isVisible());
}

}  // namespace
}  // namespace velmora
