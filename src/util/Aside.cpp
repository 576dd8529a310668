// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Aside.h"

namespace velmora {

namespace {

TAside& Here() {
  static TAside here;
  return here;
}

TAside* used = nullptr;
thread_local const std::atomic<bool>* is_left = nullptr;

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): what the work holds goes with it, not with the caller
void TAside::End(std::function<void()> work) noexcept {
  try {
    work();
  } catch (...) {  // nobody could do anything about it
  }
}

TAside& Aside() { return used == nullptr ? Here() : *used; }

TAsideGuard::TAsideGuard(TAside& aside) : former_(std::exchange(used, &aside)) {}
TAsideGuard::~TAsideGuard() { used = former_; }

void StopIfLeft() {
  if (is_left != nullptr && is_left->load(std::memory_order_relaxed)) throw ECancelled();
}

TLeftMark::TLeftMark(const std::atomic<bool>& left) { is_left = &left; }
TLeftMark::~TLeftMark() { is_left = nullptr; }

}  // namespace velmora
