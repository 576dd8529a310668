// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPlainTextEdit>

#include "shell/widgets/QtText.h"
#include "sync/MessageLog.h"
#include "util/Text.h"

namespace velmora {

// The message log that a memo shows.
class TWindowLog final : public TLineLog {
 public:
  TWindowLog(const TClock& clock, TProgress& progress, QPlainTextEdit& memo) : TLineLog(clock, progress), memo_(memo) {}

 protected:
  void Changed() override {
    std::string text;
    for (const std::string& line : Lines()) text.append(text.empty() ? "" : "\n").append(ShownText(line));
    memo_.setPlainText(ToQt(text));
  }

 private:
  QPlainTextEdit& memo_;
};

}  // namespace velmora
