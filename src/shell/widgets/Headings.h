// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

#include "shell/widgets/Named.h"

namespace velmora {

// The caption over a panel, with the letter that leads to it. A long one is cut: it does not widen the window.
inline QLabel* NewHeading(const char* name, const QString& text, QWidget* buddy) {
  QLabel* heading = Named(new QLabel(text), name);
  heading->setBuddy(buddy);
  heading->setTextFormat(Qt::PlainText);
  heading->setContentsMargins(2, 4, 2, 2);
  heading->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  return heading;
}

}  // namespace velmora
