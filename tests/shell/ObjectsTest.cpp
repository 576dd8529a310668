// SPDX-License-Identifier: GPL-3.0-or-later

// Views, triggers, routines and events in the window, and what a task asks of a comparison.

#include <QTreeView>

#include "shell/DesktopRig.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using velmora::testing::TDesktopRig;
using velmora::testing::TLiveDatabase;

class ObjectsTest : public ::testing::Test {
 protected:
  ObjectsTest() : reference_("objects_ref"), target_("objects_tgt") {
    for (TLiveDatabase* database : {&reference_, &target_}) database->Run("create table views (a int)");
    reference_.Run("alter table views add b int");
    reference_.Run("create definer = 'nobody'@'nowhere' view v as select a from views");
    reference_.Run("create trigger g before insert on views for each row begin set new.a = 1; set new.a = 2; end");
    target_.Run("create trigger g before insert on views for each row set new.a = 3");
    rig_.NewTask("objects_ref", "objects_tgt", "acExactDialect");
    rig_.Trigger("acAnalyze");
  }

  // The groups of the tree with their lines: "views: New column b|..."
  std::string Tree() {
    std::string text;
    const QAbstractItemModel& model = *rig_.Find<QTreeView>("tlDifferences")->model();
    for (int group = 0; group < model.rowCount(); ++group) {
      const QModelIndex top = model.index(group, 0);
      text += FromQt(top.data().toString()) + ":";
      for (int line = 0; line < model.rowCount(top); ++line)
        text += " " + FromQt(model.index(line, 0, top).data().toString());
      text += "|";
    }
    return text;
  }
  // Enters the definers in the dialog and ends it by that button; gives the message of a faulty text, whose dialog
  // ends by Cancel then.
  std::string Definers(const char* text, const char* button, bool faulty = false) {
    std::string message;
    WhenModal([&](QWidget* dialog) {
      Child<QPlainTextEdit>(*dialog, "opt_definer")->setPlainText(QLatin1String(text));
      if (faulty)
        WhenModal([&](QWidget* box) {
          message = FromQt(box->property("text").toString());
          box->close();
        });
      Click(*dialog, button);
      if (faulty) Click(*dialog, "butCancel");
    });
    rig_.Trigger("acComparison");
    QApplication::setActiveWindow(&rig_.Main());
    return message;
  }

  TLiveDatabase reference_;
  TLiveDatabase target_;
  TDesktopRig rig_;
};

TEST_F(ObjectsTest, HaveGroupsOfTheirOwnWithTheirTexts) {
  EXPECT_EQ(Tree(), "views: column b|Views: view v|Triggers: trigger g|");
  auto& tree = *rig_.Find<QTreeView>("tlDifferences");
  tree.setCurrentIndex(tree.model()->index(0, 0, tree.model()->index(2, 0)));
  EXPECT_THAT(rig_.Text("mDiffRef"), HasSubstr("set new.a = 2; end"));
  EXPECT_THAT(rig_.Text("mDiffTgt"), HasSubstr("set new.a = 3"));
  EXPECT_THAT(rig_.Ask("acSynchronize", "Yes"), HasSubstr("objects_tgt"));
  EXPECT_TRUE(rig_.Shown("lbEqual"));
}

TEST_F(ObjectsTest, OptionsOfTheComparisonBelongToTheTask) {
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("definer = `nobody`@`nowhere` SQL SECURITY"));
  EXPECT_THAT(Definers("everybody", "butOK", true),
              AllOf(HasSubstr("Definers: "), HasSubstr("everybody is no policy")));
  Definers("strip", "butCancel");
  EXPECT_THAT(rig_.Text("mScript"), HasSubstr("nobody"));
  Definers("strip", "butOK");
  EXPECT_THAT(rig_.Text("mScript"), Not(HasSubstr("nobody")));
  rig_.host->chosen = rig_.folder / "objects.vlt";
  rig_.Trigger("acSaveTaskAs");
  rig_.Trigger("acCloseTask");
  rig_.Trigger("acOpenTask");
  rig_.Trigger("acAnalyze");
  EXPECT_THAT(rig_.Text("mScript"), Not(HasSubstr("nobody")));
}

}  // namespace
}  // namespace velmora
