// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/ActionTree.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/MessageOf.h"
#include "support/RecordingHost.h"
#include "support/RecordingPorts.h"

namespace velmora::testing {
namespace {

class ActionTreeTest : public ::testing::Test {
 protected:
  ActionTreeTest() { tree_.SetView(&view_); }

  void Add(TSyncAction action, const std::string& table, const std::string& item = {}) {
    const TActionRow& row = data_.mtActions.Append(action, table, item, {});
    tree_.AddToTree(action, table, row.id, SyncAction(action).LogText(table, item));
  }
  // Deletes what a top node stands for, or its first child.
  void DeleteTop(const std::string& table) { Delete(&Top(table)); }
  void DeleteChild(const std::string& table) { Delete(&Top(table).children.front()); }
  const TActionNode& Top(const std::string& table) const {
    const auto& tops = tree_.Top();
    return *std::find_if(tops.begin(), tops.end(), [&](const TActionNode& node) { return node.text == table; });
  }
  void Delete(const TActionNode* node) {
    DeleteAction(node, tree_, data_, [this] { ++generated_; });
  }
  // "t(New column a,New column b)" per top node, with the icon and id of each.
  std::string Nodes() const {
    std::string text;
    for (const TActionNode& top : tree_.Top()) {
      text += Node(top);
      for (const TActionNode& child : top.children) text += "  " + Node(child);
    }
    return text;
  }
  std::string RowIds() const {
    std::string ids;
    for (const TActionRow& row : data_.mtActions.Rows()) ids += std::to_string(row.id) + " ";
    return ids;
  }

  TdmData data_;
  TActionTree tree_;
  TRecordingTreeView view_;
  int generated_ = 0;

 private:
  static std::string Node(const TActionNode& node) {
    return node.text + " [" + std::to_string(node.icon) + (node.id.empty() ? "" : " #" + node.id) + "]\n";
  }
};

TEST_F(ActionTreeTest, HasATopNodePerTableAndAChildPerInnerAction) {
  Add(saDropTable, "old");
  Add(saChangeTableType, "t", "t");
  Add(saModifyColumn, "u", "a");
  Add(saDropKey, "t", "k");
  Add(saAddConstraint, "T", "f");  // top nodes are told apart by case
  Add(saCreateTable, "new");
  EXPECT_EQ(Nodes(),
            "old [5 #1]\n"
            "t [3]\n"
            "  Changed type of table t [1 #2]\n"
            "  Obsolete index k [2 #4]\n"
            "u [3]\n"
            "  Changed column a [1 #3]\n"
            "T [3]\n"
            "  New constraint f [0 #5]\n"
            "new [4 #6]\n");
  EXPECT_EQ(view_.calls[3], "+u");
  EXPECT_EQ(view_.calls[5], "+t/Obsolete index k");
}

TEST_F(ActionTreeTest, AWholeTableActionOnAnExistingNodeAddsNothing) {
  Add(saAddColumn, "t", "a");
  Add(saDropTable, "t");
  EXPECT_EQ(Nodes(), "t [3]\n  New column a [0 #1]\n");
}

TEST_F(ActionTreeTest, KeepsTheFullNameThatTheRowCuts) {
  const std::string name(60, 'n');
  Add(saCreateTable, name);
  EXPECT_EQ(tree_.Top().front().text, name);
  EXPECT_EQ(data_.mtActions.First()->table, std::string(50, 'n'));
}

TEST_F(ActionTreeTest, DeletingAChildLeavesItsSiblings) {
  Add(saAddColumn, "t", "a");
  Add(saAddColumn, "t", "b");
  DeleteChild("t");
  EXPECT_EQ(Nodes(), "t [3]\n  New column b [0 #2]\n");
  EXPECT_EQ(RowIds(), "2 ");
  EXPECT_EQ(generated_, 1);
}

TEST_F(ActionTreeTest, DeletingTheLastChildTakesTheTableAway) {
  Add(saAddColumn, "t", "a");
  Add(saCreateTable, "new");
  DeleteChild("t");
  EXPECT_EQ(Nodes(), "new [4 #2]\n");
  EXPECT_EQ(view_.calls.back(), "-t");
  Add(saAddColumn, "t", "b");  // the name is free again
  EXPECT_EQ(Nodes(), "new [4 #2]\nt [3]\n  New column b [0 #3]\n");
}

TEST_F(ActionTreeTest, DeletingATableTakesAllItsActions) {
  Add(saAddColumn, "t", "a");
  Add(saAddKey, "u", "k");
  Add(saAddKey, "t", "k");
  Add(saDropTable, "old");
  DeleteTop("t");
  EXPECT_EQ(RowIds(), "2 4 ");
  DeleteTop("old");
  EXPECT_EQ(RowIds(), "2 ");
  EXPECT_EQ(Nodes(), "u [3]\n  New index k [0 #2]\n");
}

TEST_F(ActionTreeTest, TheLastChildTakesTheRowOfItsTableAlong) {
  Add(saCreateTable, "t");
  Add(saAddColumn, "t", "a");
  DeleteChild("t");
  EXPECT_EQ(RowIds(), "");
  EXPECT_TRUE(tree_.Top().empty());
}

TEST_F(ActionTreeTest, RefusesToDeleteNothing) {
  EXPECT_EQ(MessageOf([this] { Delete(nullptr); }), "Please select action before deletion");
  EXPECT_EQ(generated_, 0);
}

TEST_F(ActionTreeTest, ADeletionThatFailsKeepsWhatItDeletedDeleted) {
  Add(saAddColumn, "t", "a");
  Add(saAddColumn, "t", "b");
  Add(saAddColumn, "t", "c");
  data_.mtActions.Delete(2);
  EXPECT_EQ(MessageOf([this] { DeleteTop("t"); }), "Can't locate action!");
  EXPECT_EQ(RowIds(), "3 ");
  EXPECT_EQ(tree_.Top().size(), 1U);
  EXPECT_EQ(generated_, 0);
}

TEST_F(ActionTreeTest, LetsMessagesRunTwicePerDeletion) {
  TRecordingHost host;
  const THostGuard guard(host);
  Add(saCreateTable, "t");
  DeleteTop("t");
  EXPECT_EQ(host.pumped, 2);
}

TEST_F(ActionTreeTest, TellsTheViewOfTheOutermostUpdateOnly) {
  {
    const TTreeUpdate outer(tree_);
    const TTreeUpdate inner(tree_);
    tree_.Clear();
  }
  EXPECT_EQ(view_.calls, (TStringList{"begin", "cleared", "end"}));
}

}  // namespace
}  // namespace velmora::testing
