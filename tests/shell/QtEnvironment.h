// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QString>
#include <QTest>
#include <QWidget>
#include <functional>

#include "util/Errors.h"

namespace velmora {

// Calls `act` once with the modal window that stands as soon as there is one. To be called before what brings that
// window up and waits for its end: `act` has to end it. A failure of the test when none comes within `timeout` ms.
void WhenModal(const std::function<void(QWidget*)>& act, int timeout = 5000);

// The widget of that name in the window; an error where there is none.
template <class Widget = QWidget>
Widget* Child(const QWidget& window, const char* name) {
  auto* widget = window.findChild<Widget*>(QString::fromLatin1(name));
  if (widget == nullptr) RaiseError(std::string("no widget ") + name);
  return widget;
}

inline void Click(const QWidget& window, const char* name) {
  QTest::mouseClick(Child<QAbstractButton>(window, name), Qt::LeftButton);
}

}  // namespace velmora
