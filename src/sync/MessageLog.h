// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to the message panel, and the log that is used where there is no window.

#include <string>

#include "sync/Progress.h"
#include "util/Clock.h"
#include "util/Lists.h"

namespace velmora {

class TMessageLog {
 public:
  virtual ~TMessageLog() = default;
  // What happens right now: a new line of date, time, two blanks and `text`. The progress report shows `text` too, and
  // pending window messages run.
  virtual void LogLine(const std::string& text) = 0;
  virtual void SetLines(const TStringList& lines) = 0;  // replaces all lines
};

// Holds the lines. A window's log can be one of these that also shows what Changed tells it.
class TLineLog : public TMessageLog {
 public:
  TLineLog(const TClock& clock, TProgress& progress) : clock_(clock), progress_(progress) {}
  void LogLine(const std::string& text) override;
  void SetLines(const TStringList& lines) override;
  const TStringList& Lines() const { return lines_; }

 protected:
  virtual void Changed() {}

 private:
  const TClock& clock_;
  TProgress& progress_;
  TStringList lines_;
};

}  // namespace velmora
