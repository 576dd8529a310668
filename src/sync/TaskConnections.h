#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "core/DBConn.h"

namespace velmora {

// The two connections of the open task; either may be empty. What works on the task looks here each time, since the
// target is replaced by every comparison.
struct TTaskConnections {
  std::unique_ptr<TDBConn> reference;
  std::unique_ptr<TDBConn> target;

  // Who ends with the pair anyway takes the old targets here instead of having them freed on the way.
  std::vector<std::unique_ptr<TDBConn>>* retired = nullptr;

  // Puts `fresh` in the place of the target, which is freed unless somebody takes it.
  void SwapTarget(std::unique_ptr<TDBConn> fresh) {
    target.swap(fresh);
    if (retired != nullptr) retired->push_back(std::move(fresh));
  }
};

}  // namespace velmora
