// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include "persist/TaskMarks.h"

class QCheckBox;
class QComboBox;

namespace velmora {

// The dialog "Task": the marks of the open task.
class TfmTaskMarks final : public QDialog {
 public:
  explicit TfmTaskMarks(QWidget* parent = nullptr);

  // Shows the marks and waits for the user. After OK they are what the dialog holds, and the result is true.
  bool Edit(TTaskMarks& marks);

 private:
  QComboBox* colour_;
  QCheckBox* confirm_;
};

}  // namespace velmora
