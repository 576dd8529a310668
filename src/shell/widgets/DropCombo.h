// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>
#include <QElapsedTimer>
#include <functional>

namespace velmora {

// A combo box that asks for its list each time it opens. An error of that is shown, and the list
// stays closed, as it was. A blank within a name that is typed to find it is one of its letters; alone it opens the
// list.
class TDropCombo : public QComboBox {
 public:
  using QComboBox::QComboBox;

  std::function<void()> OnDropDown;
  void showPopup() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void GoOnWith(const QString& typed);

  QElapsedTimer last_letter_;
};

}  // namespace velmora
