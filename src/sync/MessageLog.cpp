// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/MessageLog.h"

#include "core/Host.h"
#include "crash/CrashNotes.h"

namespace velmora {

void TLineLog::LogLine(const std::string& text) {
  NoteForCrash(text);
  lines_.push_back(ShortDateTimeText(clock_.Now()) + "  " + text);
  Changed();
  progress_.SetDetailText(text);
  Host().ProcessMessages();
}

void TLineLog::SetLines(const TStringList& lines) {
  lines_ = lines;
  Changed();
}

}  // namespace velmora
