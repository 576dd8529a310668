// SPDX-License-Identifier: GPL-3.0-or-later
#include "sandbox/ChildWait.h"

#include <utility>

namespace velmora {

namespace {

constexpr std::chrono::milliseconds kRound{1000};

TChildWait& StandsStill() {
  static TChildWait wait;
  return wait;
}

TChildWait* used = nullptr;

}  // namespace

void TChildWait::WaitFor(const TCame& came) {
  while (!came(kRound)) {
  }
}

TChildWait& ChildWait() { return used == nullptr ? StandsStill() : *used; }

TChildWaitGuard::TChildWaitGuard(TChildWait& wait) : former_(std::exchange(used, &wait)) {}
TChildWaitGuard::~TChildWaitGuard() { used = former_; }

}  // namespace velmora
