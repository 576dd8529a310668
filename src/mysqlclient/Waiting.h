// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How a program with windows waits for its servers. Each connection talks to its server on a thread of its own; the
// thread that has asked waits for the answer and lets messages run meanwhile. It is a wait all the same: calls come and
// end in the order of the program, one at a time, with the errors that they would have had.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace velmora {

class TMyConnection;

// The thread of one connection. All calls but IsHere and CameBack are for the one thread that asks.
class TServerThread {
 public:
  TServerThread() = default;
  ~TServerThread();  // ends it, after what it does; what it was left with ends by itself
  TServerThread(const TServerThread&) = delete;
  TServerThread& operator=(const TServerThread&) = delete;

  // Hands over one piece of work; what was handed over before must have come back.
  void Start(std::function<void()> work);
  // Whether it came back within this time; by any thread.
  bool CameBack(std::chrono::microseconds within);
  bool Failed() const;
  void PassOnError();  // both after it came back
  // What is under way ends by itself some time, unheard; the next work gets a new thread.
  void Leave();
  bool IsHere() const;  // the caller runs on it

  // How many pieces of work were left and have not come to their end, of all threads. They keep what they work on; a
  // program that ends meanwhile must not take itself apart.
  static int Left();

 private:
  struct TShared;

  std::shared_ptr<TShared> shared_;
  std::thread thread_;
};

// The wait of one window thread, shared by its connections.
class TWaiting {
 public:
  // `pump` lets messages run; it raises nothing, and no call of a connection that is waited for may come of it.
  // `over` is called after a call for which it ran, and raises nothing either; with whether the call raises.
  explicit TWaiting(std::function<void()> pump, std::function<void(bool failed)> over = nullptr)
      : pump_(std::move(pump)), over_(std::move(over)) {}

  // --- For what the pump runs
  // How long the call under way has been waited for; none is: nothing.
  std::optional<std::chrono::milliseconds> Waited() const;
  // Ends what is waited for: a login is given up, a statement is broken off by a second login and, where that does not
  // help within seconds, with its connection. Asked again it cuts the connection at once. Nothing is waited for:
  // nothing happens.
  void Cancel();

  // --- For connections
  // Does `work` on `thread` and waits. Of `connection` the work may be broken off; null: the work may be left alone to
  // its end, must own what it uses, and then this raises EMySqlException.
  void Do(TServerThread& thread, TMyConnection* connection, std::function<void()> work);

  // --- For others
  // The same of work that may be left alone; false where it was.
  bool DoOrLeave(TServerThread& thread, std::function<void()> work);

 private:
  struct TCall;

  bool Wait(TServerThread& thread, TMyConnection* connection, std::function<void()> work);
  void Pump(TCall& call);

  std::function<void()> pump_;
  std::function<void(bool failed)> over_;
  TCall* call_ = nullptr;  // the one that is waited for; the innermost of several
};

}  // namespace velmora
