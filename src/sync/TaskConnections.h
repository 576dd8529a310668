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

  // Frees the target and puts `fresh` in its place.
  void SwapTarget(std::unique_ptr<TDBConn> fresh) { target = std::move(fresh); }
};

}  // namespace velmora
