// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/DropCombo.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QKeyEvent>

#include "shell/widgets/TopLevel.h"

namespace velmora {

void TDropCombo::showPopup() {
  if (OnDropDown && !AtTopLevel(OnDropDown)) return;
  QComboBox::showPopup();
}

void TDropCombo::keyPressEvent(QKeyEvent* event) {
  const bool typing = last_letter_.isValid() && !last_letter_.hasExpired(QApplication::keyboardInputInterval());
  const QString typed = event->text();
  if (!isEditable() && !typed.isEmpty() && typed.at(0).isPrint()) last_letter_.start();
  if (event->key() == Qt::Key_Space && typing && !isEditable()) return GoOnWith(typed);
  QComboBox::keyPressEvent(event);
}

// As the combo box itself does with letters.
void TDropCombo::GoOnWith(const QString& typed) {
  view()->setCurrentIndex(model()->index(currentIndex(), modelColumn()));
  view()->keyboardSearch(typed);
  const int found = view()->currentIndex().row();
  if (found == currentIndex()) return;
  setCurrentIndex(found);
  emit activated(found);
}

}  // namespace velmora
