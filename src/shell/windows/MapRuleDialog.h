// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <functional>

#include "foreign/ForeignWishes.h"

class QComboBox;
class QLineEdit;

namespace velmora {

// The dialog "Rule of the mapping": what it is for, and the type of MySQL's that this gets.
class TfmMapRule final : public QDialog {
 public:
  explicit TfmMapRule(QWidget* parent = nullptr);

  // Shows the rule, with other names that it may be for, and waits for the user. OK gives what was entered to `take`,
  // which raises what is wrong with it: then the dialog stays. False after Cancel.
  bool Edit(const TMapRule& rule, const TStringList& names, const std::function<void(const TMapRule&)>& take);

 private:
  QComboBox* what_;
  QLineEdit* type_;
  std::function<void(const TMapRule&)> take_;
};

}  // namespace velmora
