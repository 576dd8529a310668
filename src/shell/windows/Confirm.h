// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

namespace velmora {

// The dialog "Please confirm". Deliberate: it is made at the start and never shown; questions use message boxes.
class TfmConfirm final : public QDialog {
 public:
  explicit TfmConfirm(QWidget* parent = nullptr);
};

}  // namespace velmora
