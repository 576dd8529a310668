// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QStyledItemDelegate>

namespace velmora {

// Paints a line of the tree of differences: its text, then in a lighter colour what changes, at the right edge a sign
// where that may lose data. What does not fit is cut; the hint has all of it.
class TDifferenceLines final : public QStyledItemDelegate {
 public:
  explicit TDifferenceLines(QObject* parent);

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& line) const override;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& line) const override;

 private:
  QIcon sign_;
};

}  // namespace velmora
