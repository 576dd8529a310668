// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCursor>
#include <QGuiApplication>

namespace velmora {

// Shows the user, as long as it lives, that the window does not answer because it works.
class TBusyCursor {
 public:
  TBusyCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
  ~TBusyCursor() { QGuiApplication::restoreOverrideCursor(); }
  TBusyCursor(const TBusyCursor&) = delete;
  TBusyCursor& operator=(const TBusyCursor&) = delete;
};

}  // namespace velmora
