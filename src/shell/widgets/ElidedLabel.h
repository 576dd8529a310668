// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QPainter>
#include <QStyle>

namespace velmora {

// A line of text that gives way: what its width has no room for is told by dots, and read in its hint.
class TElidedLabel final : public QLabel {
 public:
  using QLabel::QLabel;

  QSize minimumSizeHint() const override {
    return {kLeastLetters * fontMetrics().averageCharWidth(), QLabel::minimumSizeHint().height()};
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, width());
    style()->drawItemText(&painter, rect(), static_cast<int>(Qt::AlignVCenter), palette(), isEnabled(), shown,
                          foregroundRole());
  }

 private:
  static constexpr int kLeastLetters = 16;
};

}  // namespace velmora
