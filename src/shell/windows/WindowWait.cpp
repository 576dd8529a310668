// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/WindowWait.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
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
constexpr std::chrono::milliseconds kQuick{15};  // as waits for servers have it
constexpr std::chrono::milliseconds kTick{10};
constexpr std::chrono::seconds kFarewell{1};  // for the end of what is done aside

}  // namespace

TWindowWait::TWindowWait()
    : waiting_(std::make_shared<TWaiting>([this] { Pump(); }, [this](bool failed) { Over(failed); })) {}

bool TWindowWait::Cancel() {
  asked_ = gives_up_ = true;
  waiting_->Cancel();
  return waiting_->Waited().has_value();
}

void TWindowWait::Check() {
  if (asked_ && !Waited() && !std::exchange(told_, true)) throw ECancelled();
}

std::optional<std::chrono::milliseconds> TWindowWait::Waited() const {
  if (!since_) return waiting_->Waited();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - *since_);
}

void TWindowWait::WaitFor(const TCame& came) {
  if (came(kQuick)) return;
  since_ = std::chrono::steady_clock::now();
  gives_up_ = asked_ && !told_;
  bool back = false;
  RunGuarded(
      [&] {
        while (!back && !gives_up_) {
          Pump();
          back = came(kTick);
        }
      },
      [this] { since_.reset(); });
  Over(!back);
  if (!back) throw ECancelled();
}

void TWindowWait::Do(ESlow kind, const std::function<void()>& work) {
  if (QThread::currentThread() != QCoreApplication::instance()->thread()) return work();
  Check();
  TServerThread own;  // within another wait
  TServerThread& thread = thread_is_used_ ? own : thread_;
  const auto left = std::make_shared<std::atomic<bool>>(false);
  const ESlow outer = std::exchange(kind_, kind);
  const bool was_used = std::exchange(thread_is_used_, true);
  bool done = false;
  RunGuarded(
      [&] {
        done = waiting_->DoOrLeave(thread, [left, work] {
          const TLeftMark mark(*left);
          work();
        });
      },
      [&] {
        kind_ = outer;
        thread_is_used_ = was_used;
      });
  *left = !done;
  if (!done) throw ECancelled();
}

void TWindowWait::End(std::function<void()> work) noexcept {
  try {
    TServerThread thread;
    thread.Start(std::move(work));
    if (!thread.CameBack(kFarewell)) thread.Leave();
  } catch (...) {  // no thread is to be had; what is to be ended ends with the program
  }
}

// What the user does to a window that is still in use must not call the connection again: it is kept for later.
void TWindowWait::Pump() {
  AtTopLevel([this] {
    if (progress_ != nullptr && !progress_->isVisible() && Waited() > kLong) {
      shows_ = true;
      const QString text = since_ || kind_ == ESlow::Files ? TText::tr("Waiting for the file or driver...")
                                                           : TText::tr("Waiting for the server...");
      progress_->ShowSimple(FromQt(text));
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
