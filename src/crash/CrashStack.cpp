// SPDX-License-Identifier: GPL-3.0-or-later
#include "crash/CrashStack.h"

namespace velmora {

TCrashStack::TCrashStack() : memory_(std::make_unique_for_overwrite<std::array<std::byte, kSize>>()) {
  stack_t stack = {};
  stack.ss_sp = memory_->data();
  stack.ss_size = memory_->size();
  sigaltstack(&stack, &former_);
}

TCrashStack::~TCrashStack() { sigaltstack(&former_, nullptr); }

}  // namespace velmora
