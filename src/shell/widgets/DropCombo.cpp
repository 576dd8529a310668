// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/DropCombo.h"

#include "shell/widgets/TopLevel.h"

namespace velmora {

void TDropCombo::showPopup() {
  if (OnDropDown && !AtTopLevel(OnDropDown)) return;
  QComboBox::showPopup();
}

}  // namespace velmora
