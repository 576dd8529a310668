// SPDX-License-Identifier: GPL-3.0-or-later

// Names that become others: offered in the list, accepted, taken back, run.

#include <QTreeView>

#include "shell/DesktopRig.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using velmora::testing::Answer;
using velmora::testing::TDesktopRig;
using velmora::testing::TLiveDatabase;

class RenameTest : public ::testing::Test {
 protected:
  RenameTest() : reference_("rename_ref"), target_("rename_tgt") {
    reference_.Run("create table moves (id int primary key, at datetime, amount int)");
    reference_.Run("create table orders (id int primary key, name varchar(90), sum decimal(10,2), note text)");
    target_.Run("create table movements (id int primary key, at datetime, amount int)");
    target_.Run("create table orders (id int primary key, name varchar(90), total decimal(10,2), note text)");
    target_.Run("insert into movements values (1, null, 7)");
    target_.Run("insert into orders values (1, 'a', 12.5, '')");
    rig_.NewTask("rename_ref", "rename_tgt", "acExactDialect");
    rig_.Trigger("acAnalyze");
  }

  QTreeView& Tree() { return *rig_.Find<QTreeView>("tlDifferences"); }
  // Makes the line of that text the current one; gives what the context menu offers for it.
  std::string OfferOf(const char* line) {
    const QAbstractItemModel& model = *Tree().model();
    const QModelIndexList found =
        model.match(model.index(0, 0), Qt::DisplayRole, QLatin1String(line), 1, Qt::MatchExactly | Qt::MatchRecursive);
    if (found.isEmpty()) return std::string("no line ") + line;
    Tree().setCurrentIndex(found.first());
    return Offer();
  }
  std::string Offer() {
    const QAction* command = rig_.Main().Command("acRename");
    return FromQt(command->text()) + (command->isEnabled() ? "" : " (not now)");
  }
  std::string Current() { return FromQt(Tree().currentIndex().data().toString()); }

  TLiveDatabase reference_;
  TLiveDatabase target_;
  TDesktopRig rig_;
};

TEST_F(RenameTest, IsOfferedAcceptedAndTakenBack) {
  struct TCase {
    const char* goes;  // lines of the list
    const char* comes;
    const char* offer;
    const char* back;
    const char* statement;
    const char* lost;  // what the script does without it
  };
  const TCase kCases[] = {
      {"column total", "column sum", "Rename total to sum instead (score 0.", "Do not rename total to sum",
       "rename column `total` to `sum`", "drop column `total`"},
      {"movements", "moves", "Rename movements to moves instead (score 0.", "Do not rename movements to moves",
       "rename table `movements` to `moves`", "drop table `movements`"},
  };
  EXPECT_EQ(OfferOf("orders"), "Rename instead (not now)");
  for (const TCase& item : kCases) {
    EXPECT_THAT(rig_.Text("mScript"), HasSubstr(item.lost));
    EXPECT_THAT(OfferOf(item.goes), HasSubstr(item.offer));
    EXPECT_THAT(OfferOf(item.comes), HasSubstr(item.offer));
    rig_.Trigger("acRename");
    EXPECT_EQ(Current(), item.comes);
    EXPECT_EQ(Offer(), item.back);
    EXPECT_THAT(rig_.Text("mDiffTgt"), HasSubstr("CREATE TABLE"));  // by its old name
    EXPECT_THAT(rig_.Text("mScript"), AllOf(HasSubstr(item.statement), Not(HasSubstr(item.lost))));
    rig_.Trigger("acRename");
    EXPECT_THAT(OfferOf(item.goes), HasSubstr(item.offer));
  }
}

TEST_F(RenameTest, RunsAndKeepsTheValues) {
  EXPECT_THAT(
      rig_.Ask("acSynchronize", "No"),
      AllOf(HasSubstr("Perhaps renamed only"), HasSubstr("- orders.total to sum"), HasSubstr("movements to moves")));
  for (const char* line : {"column total", "movements"}) {
    OfferOf(line);
    rig_.Trigger("acRename");
  }
  EXPECT_THAT(rig_.Ask("acSynchronize", "Yes"),
              AllOf(HasSubstr("Nothing in it was found to lose data"), Not(HasSubstr("Perhaps"))));
  EXPECT_TRUE(rig_.Shown("lbEqual"));
  EXPECT_EQ(Answer(target_.Connection(), "select sum from orders"), "12.50");
  EXPECT_EQ(Answer(target_.Connection(), "select amount from moves"), "7");
}

}  // namespace
}  // namespace velmora
