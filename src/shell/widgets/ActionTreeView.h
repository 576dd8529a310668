// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTreeWidget>
#include <array>
#include <functional>
#include <unordered_map>

#include "sync/ActionTree.h"

namespace velmora {

// The tree of sync actions as the user sees it: no headers, one shown column, the row's id in a hidden one.
class TActionTreeView final : public QTreeWidget, public TTreeView {
 public:
  enum EColumn { tlActionNaslov, tlActionID, tlActionTable, tlActionWord, kColumnCount };

  explicit TActionTreeView(QWidget* parent = nullptr);

  std::function<void()> OnDeleteKey;

  void SetHint(const QString& hint);  // what an empty tree says

  const TActionNode* FocusedNode() const;  // null when there is none
  static const TActionNode* NodeOf(const QTreeWidgetItem* item);

  // Nodes that come within an update are shown at its end, all at once.
  void BeginUpdate() override;
  void EndUpdate() override;
  void NodeAdded(const TActionNode& node) override;
  void NodeRemoved(const TActionNode& node) override;
  void Cleared() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  std::array<QIcon, 6> imgDiff_;  // by TActionIcon
  std::unordered_map<const TActionNode*, QTreeWidgetItem*> items_;
  QList<QTreeWidgetItem*> pending_;  // top items of the update under way; ours until it ends
  bool updating_ = false;
  QString hint_;
};

}  // namespace velmora
