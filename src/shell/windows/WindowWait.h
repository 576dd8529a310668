// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How the window waits for its servers, and how the user ends what is under way.

#include <chrono>
#include <memory>
#include <optional>

#include "mysqlclient/Waiting.h"
#include "sandbox/ChildWait.h"
#include "util/Aside.h"

namespace velmora {

class TfmProgress;

// Of answers from readers and drivers in processes of their own it is the same wait; cancelled, these end. Work that is
// done aside runs on a thread of its own; cancelled, it is left.
class TWindowWait final : public TChildWait, public TAside {
 public:
  TWindowWait();

  // Goes to each connection of the window's thread.
  const std::shared_ptr<TWaiting>& Waiting() const { return waiting_; }
  // Shows long waits by this window, unless it stands already. It outlives this object, or is taken away by null.
  void ShowBy(TfmProgress* progress) { progress_ = progress; }

  void Begin() { asked_ = told_ = false; }  // a new command; what was to be cancelled before is over
  // By the user: ends the work at its next pause, and what is waited for meanwhile. True while something is waited for:
  // asking once more cuts its connection.
  bool Cancel();
  bool Cancelling() const { return asked_; }
  void Check();                     // at a pause; raises ECancelled, once, if no call has ended by it
  void TooLate() { told_ = true; }  // what comes now is no work that could be cancelled
  void WaitFor(const TCame& came) override;
  void Do(ESlow kind, const std::function<void()>& work) override;  // on any other thread it is done there
  void End(std::function<void()> work) noexcept override;

 private:
  std::optional<std::chrono::milliseconds> Waited() const;
  void Pump();
  void Over(bool failed);

  TfmProgress* progress_ = nullptr;
  bool shows_ = false;
  bool asked_ = false;
  bool told_ = false;
  std::optional<std::chrono::steady_clock::time_point> since_;  // a child is waited for
  bool gives_up_ = false;                                       // likewise, no longer
  ESlow kind_ = ESlow::Server;                                  // of what is waited for otherwise
  TServerThread thread_;                                        // of what is done aside
  bool thread_is_used_ = false;
  std::shared_ptr<TWaiting> waiting_;
};

}  // namespace velmora
