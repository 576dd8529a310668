// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/WindowWait.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <chrono>
#include <utility>

#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "shell/windows/Progress.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr std::chrono::milliseconds kLong{400};  // before a wait is shown

}  // namespace

TWindowWait::TWindowWait()
    : waiting_(std::make_shared<TWaiting>([this] { Pump(); }, [this](bool failed) { Over(failed); })) {}

bool TWindowWait::Cancel() {
  asked_ = true;
  waiting_->Cancel();
  return waiting_->Waited().has_value();
}

void TWindowWait::Check() {
  if (asked_ && !waiting_->Waited() && !std::exchange(told_, true)) throw ECancelled();
}

// What the user does to a window that is still in use must not call the connection again: it is kept for later.
void TWindowWait::Pump() {
  AtTopLevel([this] {
    if (progress_ != nullptr && !progress_->isVisible() && waiting_->Waited() > kLong) {
      shows_ = true;
      progress_->ShowSimple(FromQt(TText::tr("Waiting for the server...")));
    }
    const bool shown = progress_ != nullptr && progress_->isVisible();
    QCoreApplication::processEvents(shown ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
  });
}

void TWindowWait::Over(bool failed) {
  if (asked_ && failed) told_ = true;
  if (std::exchange(shows_, false) && progress_ != nullptr) progress_->Finish();
}

}  // namespace velmora
