// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Ctrl+C, and the signals that ask a process to end, while a script runs.

#include <signal.h>  // NOLINT(modernize-deprecated-headers): for sigaction

#include <array>
#include <atomic>
#include <mutex>
#include <optional>
#include <thread>

#include "core/Host.h"

namespace velmora {

class TMyConnection;

// While it lives,
// - a first Ctrl+C ends the work at its next pause, by an error from the message pump; SIGTERM and SIGHUP do the same,
//   however often they come. Where the work does not get there in time they do as a second Ctrl+C does, and where it
//   does not end after that, the process ends;
// - a second Ctrl+C breaks off the statement that runs: the server is asked to, and where neither its answer nor the
//   statement's end comes within seconds the connection is cut. Either way the work goes on with an error;
// - a third one ends the process.
// Where what runs can be thrown away, SIGTERM and SIGHUP break the statement off at once.
// A signal that whoever started the process has it ignore stays ignored. One object at a time.
class TInterruptHost final : public THost {
 public:
  enum class EToldToEnd { FinishStatement, BreakOff };  // what SIGTERM and SIGHUP mean for the statement that runs

  // `running` is the connection that the work waits for, null where it waits for none. It outlives this object. A
  // statement that was broken off has `grace` milliseconds to come back.
  explicit TInterruptHost(TMyConnection* running, int grace = 3000,
                          EToldToEnd told_to_end = EToldToEnd::FinishStatement);
  ~TInterruptHost() override;
  TInterruptHost(const TInterruptHost&) = delete;
  TInterruptHost& operator=(const TInterruptHost&) = delete;
  void ProcessMessages() override;  // raises "Cancelled"
  bool Cancelling() const override { return cancelling_; }
  // The work waits for this one from here on. The former one is left alone once the call has returned.
  void RunsOn(TMyConnection* running);

 private:
  struct TCaught {
    int signal;
    void (*handler)(int signal);
    struct sigaction former {};
  };

  std::optional<char> NextWord(int patience) const;
  void Watch();
  std::optional<char> BreakOff();

  std::atomic<bool> cancelling_ = false;  // the work was told to end, or is broken off
  std::mutex mutex_;
  TMyConnection* running_;  // guarded by it
  int grace_;
  int wake_[2] = {-1, -1};  // a pipe from the handler to the watcher
  std::array<TCaught, 3> caught_;
  std::thread watcher_;
};

}  // namespace velmora
