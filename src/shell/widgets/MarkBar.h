// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QLabel>

#include "persist/TaskMarks.h"

namespace velmora {

// The two colours of a mark: of its area, and of a text on it. None is of the window's own colours.
struct TMarkColours {
  QColor back;
  QColor text;
};
TMarkColours ColoursOf(ETaskColour colour);  // invalid ones for None

// A bar in the colour of a task, with a text, as colours alone do not reach everybody. Hidden for a task without one.
class TMarkBar final : public QLabel {
 public:
  explicit TMarkBar(QWidget* parent = nullptr);

  void Mark(ETaskColour colour, const QString& text);

 protected:
  QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }
};

}  // namespace velmora
