// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

#include "core/DBConn.h"

namespace velmora {

// The two connections of the open task; either may be empty. What works on the task looks here each time, since the
// target is replaced by every comparison.
struct TTaskConnections {
  std::unique_ptr<TDBConn> reference;
  std::unique_ptr<TDBConn> target;

  // Puts `fresh` in the place of the target, which it gives.
  std::unique_ptr<TDBConn> SwapTarget(std::unique_ptr<TDBConn> fresh) {
    target.swap(fresh);
    return fresh;
  }
};

}  // namespace velmora
