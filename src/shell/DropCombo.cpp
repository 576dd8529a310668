#include "shell/DropCombo.h"

#include "shell/TopLevel.h"

namespace velmora {

void TDropCombo::showPopup() {
  if (OnDropDown && !AtTopLevel(OnDropDown)) return;
  QComboBox::showPopup();
}

}  // namespace velmora
