// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the statements of a script may cost, read from the text that will run, whoever wrote it.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exact/plan/Plan.h"

namespace velmora {

struct TStatementRisk {
  std::size_t start = 0;                    // of the statement in the script
  std::string text;                         // the statement
  const TPlanStatement* planned = nullptr;  // the statement of the plan that it is, if it is one
  std::vector<std::string> reasons;         // never empty
};

// With LF at every end of a line: a script may have passed through an editor.
std::string WithPlainLineEnds(std::string_view text);

// The creation text of a table as the target has it; nothing where that is not known.
using TStructureOf = std::function<std::optional<std::string>(const std::string& table)>;

// The statements of `script` that may lose data, in order. Those of the plan keep the reasons that it knows. Of all
// others the words decide, and the structure of their tables, which is followed from statement to statement: what
// drops, empties, overwrites, renames or narrows is unsafe, and so is every statement that is not known to be harmless.
std::vector<TStatementRisk> ScriptRisks(std::string_view script, const std::vector<TPlanStatement>& plan,
                                        const TStructureOf& structure_of);

}  // namespace velmora
