// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <signal.h>  // NOLINT(modernize-deprecated-headers): for sigaltstack

#include <array>
#include <cstddef>
#include <memory>

namespace velmora {

// Room in which a report can be written of the thread that makes this object, where its own stack is what is used up.
// To stand in the thread's function, whatever else it calls; the thread of main has such room from WatchForCrashes.
class TCrashStack {
 public:
  TCrashStack();
  ~TCrashStack();
  TCrashStack(const TCrashStack&) = delete;
  TCrashStack& operator=(const TCrashStack&) = delete;

 private:
  static constexpr std::size_t kSize = 64 << 10;

  std::unique_ptr<std::array<std::byte, kSize>> memory_;
  stack_t former_ = {};
};

}  // namespace velmora
