// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The tree of sync actions: a top node per table, below it a node per action; a top node for all views, one for all
// triggers and so on. Rows live in the action table; the only
// link from a node to its row is the row's id.

#include <functional>
#include <list>
#include <string>
#include <unordered_map>

#include "sync/Data.h"
#include "sync/SyncActions.h"

namespace velmora {

struct TActionNode {
  std::string text;  // the table's name, or the log text of the action
  std::string id;    // of the row, as text; empty for a table with changes inside
  TActionIcon icon = kIconTableWithChanges;
  TActionNode* parent = nullptr;  // null for a top node
  std::list<TActionNode> children;
};

// The port to whoever shows the tree. Calls stand between BeginUpdate and EndUpdate where many follow each other.
class TTreeView {
 public:
  virtual ~TTreeView() = default;
  virtual void BeginUpdate() {}
  virtual void EndUpdate() {}
  virtual void NodeAdded(const TActionNode& node) = 0;    // as the last child of its parent
  virtual void NodeRemoved(const TActionNode& node) = 0;  // called before it goes, with its children
  virtual void Cleared() = 0;
};

class TActionTree {
 public:
  TActionTree() = default;
  TActionTree(const TActionTree&) = delete;
  TActionTree& operator=(const TActionTree&) = delete;

  void SetView(TTreeView* view) { view_ = view; }  // not owned; null for none

  const std::list<TActionNode>& Top() const { return top_; }

  void Clear();
  // Nests; the view is told of the outermost pair.
  void BeginUpdate();
  void EndUpdate();

  // Adds the node of an action, and first the top node of its table if there is none; of an object `table` is the title
  // of its kind, which is another node than that of a table with this name.
  void AddToTree(TSyncAction action, const std::string& table, int row_id, const std::string& log_text);
  void Remove(const TActionNode& node);  // a node of this tree, with its children

 private:
  TActionNode& TopOf(const TSyncActionInfo& action, const std::string& table, int row_id);
  TActionNode& AddNode(std::list<TActionNode>& list, TActionNode node);

  std::list<TActionNode> top_;
  std::unordered_map<std::string, std::list<TActionNode>::iterator> by_name_;   // tables
  std::unordered_map<std::string, std::list<TActionNode>::iterator> by_title_;  // kinds of objects
  TTreeView* view_ = nullptr;
  int updates_ = 0;
};

// Keeps the view of a tree from following until it ends.
class TTreeUpdate {
 public:
  explicit TTreeUpdate(TActionTree& tree) : tree_(tree) { tree_.BeginUpdate(); }
  ~TTreeUpdate() { tree_.EndUpdate(); }
  TTreeUpdate(const TTreeUpdate&) = delete;
  TTreeUpdate& operator=(const TTreeUpdate&) = delete;

 private:
  TActionTree& tree_;
};

inline constexpr char kNothingFocused[] = "Please select action before deletion";

// Deletes what `focused` (null for none) stands for: its rows, its node, and the node of its table if no action is left
// there; then calls `regenerate`, which makes the script follow. Actions do not depend on each other: no other row
// goes. Raises kNothingFocused and "Can't locate action!"; what was deleted till then is gone.
void DeleteAction(const TActionNode* focused, TActionTree& tree, TdmData& data,
                  const std::function<void()>& regenerate);

}  // namespace velmora
