// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/ActionTreeView.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>

#include "shell/widgets/Icons.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"

namespace velmora {

namespace {

constexpr int kNodeRole = Qt::UserRole;
constexpr int kHintMargin = 12;

}  // namespace

TActionTreeView::TActionTreeView(QWidget* parent)
    : QTreeWidget(parent), imgDiff_{Icon(QStringLiteral("diff-new")),
                                    Icon(QStringLiteral("diff-changed")),
                                    Icon(QStringLiteral("diff-obsolete")),
                                    Icon(QStringLiteral("diff-table")),
                                    Icon(QStringLiteral("diff-table-new")),
                                    Icon(QStringLiteral("diff-table-obsolete"))} {
  setObjectName(QStringLiteral("tlActions"));
  setAccessibleName(Fixed("Sync actions"));
  setColumnCount(kColumnCount);
  setHeaderHidden(true);
  for (int column = tlActionNaslov + 1; column < kColumnCount; ++column) setColumnHidden(column, true);
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  header()->setStretchLastSection(false);
  header()->setSectionResizeMode(tlActionNaslov, QHeaderView::ResizeToContents);
}

const TActionNode* TActionTreeView::FocusedNode() const { return NodeOf(currentItem()); }

const TActionNode* TActionTreeView::NodeOf(const QTreeWidgetItem* item) {
  if (item == nullptr) return nullptr;
  return static_cast<const TActionNode*>(item->data(tlActionNaslov, kNodeRole).value<void*>());
}

void TActionTreeView::BeginUpdate() {
  updating_ = true;
  setUpdatesEnabled(false);
}

void TActionTreeView::EndUpdate() {
  updating_ = false;
  const QList<QTreeWidgetItem*> shown = std::exchange(pending_, {});
  addTopLevelItems(shown);
  for (QTreeWidgetItem* item : shown) item->setExpanded(true);
  setUpdatesEnabled(true);
}

void TActionTreeView::NodeAdded(const TActionNode& node) {
  auto* item = new QTreeWidgetItem;
  item->setText(tlActionNaslov, ToQt(node.text));
  item->setText(tlActionID, ToQt(node.id));
  item->setIcon(tlActionNaslov, imgDiff_.at(static_cast<std::size_t>(node.icon)));
  item->setData(tlActionNaslov, kNodeRole, QVariant::fromValue(const_cast<void*>(static_cast<const void*>(&node))));
  items_[&node] = item;
  if (node.parent != nullptr)
    items_.at(node.parent)->addChild(item);
  else if (updating_)
    pending_.push_back(item);
  else
    addTopLevelItem(item);
}

void TActionTreeView::NodeRemoved(const TActionNode& node) {
  for (const TActionNode& child : node.children) items_.erase(&child);
  const auto found = items_.find(&node);
  if (found == items_.end()) return;
  QTreeWidgetItem* item = found->second;
  items_.erase(found);
  pending_.removeOne(item);
  delete item;
}

void TActionTreeView::Cleared() {
  items_.clear();
  qDeleteAll(std::exchange(pending_, {}));
  clear();
}

void TActionTreeView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Delete && event->modifiers() == Qt::NoModifier && OnDeleteKey) {
    OnDeleteKey();
    return;
  }
  QTreeWidget::keyPressEvent(event);
}

void TActionTreeView::SetHint(const QString& hint) {
  hint_ = hint;
  setAccessibleDescription(hint);
  viewport()->update();
}

void TActionTreeView::paintEvent(QPaintEvent* event) {
  QTreeWidget::paintEvent(event);
  if (topLevelItemCount() > 0 || hint_.isEmpty()) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::Text));
  painter.drawText(viewport()->rect().adjusted(kHintMargin, kHintMargin, -kHintMargin, -kHintMargin),
                   Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, hint_);
}

}  // namespace velmora
