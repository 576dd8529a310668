// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What of a comparison makes a command fail, for pipelines that let harmless differences pass.

#include <array>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "app/Application.h"
#include "exact/run/ExactWishes.h"
#include "lint/Rules.h"

namespace velmora {

enum class EFailOn { DataLoss, Rebuild, Lint };
inline constexpr std::array<std::string_view, 3> kFailWords = {"data-loss", "rebuild", "lint"};

struct TFailOnWishes {
  std::set<EFailOn> kinds{};  // none: any difference counts
  TLintWishes rules{};
  bool Any() const { return !kinds.empty(); }
};
// Takes words of the above with commas between them. Raises for any other.
void TakeFailOn(const std::string& text, TFailOnWishes& wishes);

struct TFailure {
  std::string kind;  // one of the words above, or "not-compared"
  std::string text;  // "orders: Obsolete column total: the column is dropped with its values"

  std::string Line() const { return kind + ": " + text; }
};

// Of the last comparison, which ended well, what is of the kinds asked for:
// - data-loss: a difference that is unsafe to make equal
// - rebuild: one for which the target's server copies or rebuilds a table, and one of a table of which nobody knows
// - lint: a warning or an error that the reference's structure has and the target's has not
// and whatever could not be compared, which may hold any of these. Lint reads both sides again, as far as `exact`
// takes them. Raises where the dialect does not tell all that, and what reading raises.
std::vector<TFailure> FailuresOf(TApplication& app, const TFailOnWishes& wishes, const TExactWishes& exact);

}  // namespace velmora
