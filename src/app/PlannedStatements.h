// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The statements of a comparison's plan, found by the text of a script.

#include <string>
#include <unordered_map>
#include <vector>

#include "exact/plan/Plan.h"

namespace velmora {

class TPlannedStatements {
 public:
  explicit TPlannedStatements(std::vector<TPlanStatement> plan);
  TPlannedStatements(const TPlannedStatements&) = delete;
  TPlannedStatements& operator=(const TPlannedStatements&) = delete;

  // Null for one that was not planned. An editor may have changed its ends of lines.
  const TPlanStatement* Find(const std::string& text) const;
  // Those that a script of the exact dialect holds, in its order.
  std::vector<TPlanStatement> In(const std::string& script) const;

 private:
  std::vector<TPlanStatement> plan_;
  std::unordered_map<std::string, const TPlanStatement*> by_text_;
};

}  // namespace velmora
