// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/ActionTree.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "core/Host.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoSuchRow[] = "Can't locate action!";
constexpr std::int64_t kNoRow = -1;

void DeleteRow(TdmData& data, std::int64_t id) {
  if (!data.mtActions.Delete(static_cast<int>(id))) RaiseError(kNoSuchRow);
}

void DeleteRowOf(const TActionNode& node, TdmData& data) {
  const std::int64_t id = TryStrToInt(node.id).value_or(kNoRow);
  if (id != kNoRow) DeleteRow(data, id);
}

}  // namespace

void TActionTree::Clear() {
  by_name_.clear();
  by_title_.clear();
  top_.clear();
  if (view_ != nullptr) view_->Cleared();
}

void TActionTree::BeginUpdate() {
  if (updates_++ == 0 && view_ != nullptr) view_->BeginUpdate();
}

void TActionTree::EndUpdate() {
  if (--updates_ == 0 && view_ != nullptr) view_->EndUpdate();
}

void TActionTree::AddToTree(TSyncAction action, const std::string& table, int row_id, const std::string& log_text) {
  const TSyncActionInfo& info = SyncAction(action);
  TActionNode& top = TopOf(info, table, row_id);
  if (info.WholeTable()) return;
  AddNode(top.children, {log_text, std::to_string(row_id), info.icon, &top, {}});
}

TActionNode& TActionTree::TopOf(const TSyncActionInfo& action, const std::string& table, int row_id) {
  auto& index = action.OfObject() ? by_title_ : by_name_;
  if (const auto found = index.find(table); found != index.end()) return *found->second;
  TActionNode node{table, {}, kIconTableWithChanges, nullptr, {}};
  if (action.WholeTable()) {
    node.id = std::to_string(row_id);
    node.icon = action.icon;
  }
  TActionNode& top = AddNode(top_, std::move(node));
  index.emplace(table, std::prev(top_.end()));
  return top;
}

TActionNode& TActionTree::AddNode(std::list<TActionNode>& list, TActionNode node) {
  TActionNode& added = list.emplace_back(std::move(node));
  if (view_ != nullptr) view_->NodeAdded(added);
  return added;
}

void TActionTree::Remove(const TActionNode& node) {
  if (view_ != nullptr) view_->NodeRemoved(node);
  if (node.parent == nullptr) {
    const auto is_it = [&node](const auto& entry) { return &*entry.second == &node; };
    for (auto* index : {&by_name_, &by_title_})
      if (const auto found = index->find(node.text); found != index->end() && is_it(*found)) {
        top_.erase(found->second);
        index->erase(found);
        return;
      }
  } else {
    std::list<TActionNode>& siblings = node.parent->children;
    siblings.erase(std::find_if(siblings.begin(), siblings.end(), [&](const TActionNode& n) { return &n == &node; }));
  }
}

void DeleteAction(const TActionNode* focused, TActionTree& tree, TdmData& data,
                  const std::function<void()>& regenerate) {
  if (focused == nullptr) RaiseError(kNothingFocused);
  for (const TActionNode& child : focused->children) DeleteRow(data, StrToInt(child.id));
  DeleteRowOf(*focused, data);
  Host().ProcessMessages();

  const TActionNode* parent = focused->parent;
  tree.Remove(*focused);
  if (parent != nullptr && parent->children.empty()) {
    DeleteRowOf(*parent, data);
    tree.Remove(*parent);
  }
  Host().ProcessMessages();
  regenerate();
}

}  // namespace velmora
