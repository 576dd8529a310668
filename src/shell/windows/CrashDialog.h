// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "crash/CrashReports.h"

class QDialogButtonBox;
class QPlainTextEdit;

namespace velmora {

// Shows the report of a crash, to be copied or saved and sent by whoever wants to. Nothing is sent by itself.
class TfmCrash final : public QDialog {
 public:
  // The newest report first; not empty.
  explicit TfmCrash(const std::vector<TCrashReport>& reports, QWidget* parent = nullptr);

 private:
  QDialogButtonBox* MakeButtons();
  void Save();

  QPlainTextEdit* text_;
};

// Offers what crashes have left in the folder since the last time, in a dialog that blocks nothing. Reports that were
// closed are not offered again.
void OfferCrashReports(const std::string& folder, QWidget* parent);

}  // namespace velmora
