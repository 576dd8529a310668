// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPalette>
#include <QString>

namespace velmora {

// The colour of links as texts take it. The usual dark blue cannot be read on a dark window, and not every desktop that
// is dark brings another one.
inline QString LinkColour(const QPalette& palette) {
  constexpr int kMiddle = 128;
  const QColor link = palette.color(QPalette::Link);
  const bool lost = palette.color(QPalette::Window).lightness() < kMiddle && link.lightness() <= kMiddle;
  return lost ? QStringLiteral("#7db8ff") : link.name();
}

}  // namespace velmora
