#pragma once

#include <QPlainTextEdit>

#include "shell/QtText.h"
#include "sync/MessageLog.h"

namespace velmora {

// The message log that a memo shows.
class TWindowLog final : public TLineLog {
 public:
  TWindowLog(const TClock& clock, TProgress& progress, QPlainTextEdit& memo) : TLineLog(clock, progress), memo_(memo) {}

 protected:
  void Changed() override { memo_.setPlainText(ToQt(JoinList(Lines(), "\n"))); }

 private:
  QPlainTextEdit& memo_;
};

}  // namespace velmora
