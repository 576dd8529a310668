// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QGroupBox;
class QVBoxLayout;

namespace velmora {

// The dialog "Extract database structure". Deliberate: it is a form that can be looked at and closed; "Extract" stays
// disabled and none of its controls does anything.
class TfmDump final : public QDialog {
 public:
  explicit TfmDump(QWidget* parent = nullptr);

 private:
  QVBoxLayout* Choices();
  QGroupBox* ScriptOptions();
};

}  // namespace velmora
