// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <vector>

#include "exact/run/ExactWishes.h"

class QWidget;

namespace velmora {

// The dialog "Comparison": a field for each option of the exact dialect.
class TfmComparison final : public QDialog {
 public:
  explicit TfmComparison(QWidget* parent);

  // Shows the options and waits for the user. True after OK, if they are others than before.
  bool Edit(TExactWishes& wishes);

 private:
  TExactWishes Entered() const;  // raises for a field that says nothing that can be

  std::vector<QWidget*> fields_;  // by ExactOptions
  TExactWishes entered_;          // when OK was pressed
};

}  // namespace velmora
