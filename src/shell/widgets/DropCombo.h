// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>
#include <functional>

namespace velmora {

// A combo box that asks for its list each time it opens. An error of that is shown, and the list
// stays closed, as it was.
class TDropCombo : public QComboBox {
 public:
  using QComboBox::QComboBox;

  std::function<void()> OnDropDown;
  void showPopup() override;
};

}  // namespace velmora
