// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <vector>

#include "persist/Options.h"

class QCheckBox;
class QFontComboBox;
class QGroupBox;
class QSpinBox;

namespace velmora {

// The dialog "Options": twelve switches and the fonts of the log and of the script editor. Made once, shown many times.
class TfmOptions final : public QDialog {
 public:
  explicit TfmOptions(QWidget* parent = nullptr);

  // Shows `options` and waits for the user. After OK they are what the dialog holds, and the result is true; otherwise
  // they are untouched. A font that is not installed keeps its name.
  bool Edit(TOptions& options);

 private:
  struct TFontRow {
    QFontComboBox* name;
    QSpinBox* size;
  };

  QGroupBox* FontGroup();
  QGroupBox* SwitchGroup(const QString& heading, int column);
  void Show(const TOptions& options);
  void Read(TOptions& options) const;

  TFontRow log_;
  TFontRow script_;
  std::vector<QCheckBox*> switches_;  // as the table of switches has them
};

}  // namespace velmora
