// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PlannedStatements.h"

#include <utility>

#include "app/ScriptSplitter.h"
#include "exact/plan/ScriptSafety.h"

namespace velmora {

TPlannedStatements::TPlannedStatements(std::vector<TPlanStatement> plan) : plan_(std::move(plan)) {
  by_text_.reserve(plan_.size());
  for (const TPlanStatement& statement : plan_) by_text_.emplace(WithPlainLineEnds(statement.text), &statement);
}

const TPlanStatement* TPlannedStatements::Find(const std::string& text) const {
  const auto found = by_text_.find(WithPlainLineEnds(text));
  return found == by_text_.end() ? nullptr : found->second;
}

std::vector<TPlanStatement> TPlannedStatements::In(const std::string& script) const {
  std::vector<TPlanStatement> planned;
  for (const TScriptStatement& statement : SplitExactScript(script).statements)
    if (const TPlanStatement* found = Find(statement.text)) planned.push_back(*found);
  return planned;
}

}  // namespace velmora
