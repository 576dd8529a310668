// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>

namespace velmora {

// How the answers of children are waited for. As it stands the thread that asks does nothing else; a program with
// windows has a way of its own.
class TChildWait {
 public:
  using TCame = std::function<bool(std::chrono::milliseconds within)>;

  virtual ~TChildWait() = default;
  // Returns when `came` gives true. It is asked again and again, each time with how long that may take at most. What
  // this raises instead ends the child.
  virtual void WaitFor(const TCame& came);
};

TChildWait& ChildWait();

// Makes `wait` the one that ChildWait() gives; the former one comes back when the guard ends.
class TChildWaitGuard {
 public:
  explicit TChildWaitGuard(TChildWait& wait);
  ~TChildWaitGuard();
  TChildWaitGuard(const TChildWaitGuard&) = delete;
  TChildWaitGuard& operator=(const TChildWaitGuard&) = delete;

 private:
  TChildWait* former_;
};

}  // namespace velmora
