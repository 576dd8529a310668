// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the user asks of a comparison and a run in the exact dialect: the options of the companion, kept in task files.

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "exact/compare/Equivalences.h"
#include "exact/compare/Renames.h"
#include "exact/objects/Definers.h"
#include "exact/plan/LockPlan.h"
#include "exact/run/Selection.h"
#include "util/Lists.h"

namespace velmora {

// Of a run of its script, where it is not to be as it always is.
struct TWaitWishes {
  std::optional<int> lock_wait{};  // seconds that a statement waits for its lock; 0: as long as the server is set to
  std::optional<int> retries{};    // of a change of structure that did not get it

  bool operator==(const TWaitWishes&) const = default;
};

struct TExactWishes {
  TDefinerWishes definers{};
  TSelection selection{};
  std::vector<TRename> renames{};
  TStringList ignored{};  // equivalences that are switched on, by their names
  TStringList strict{};   // that are switched off, whatever is ignored
  TLockWishes locks{};
  std::string reference_version{};  // "mysql 8.0.36": the server of which a reference file is a dump
  TWaitWishes waits{};

  bool operator==(const TExactWishes&) const = default;
  bool Any() const { return *this != TExactWishes(); }
};

TEquivalenceUse SwitchedEquivalences(const TExactWishes& wishes);

// An option, one row of data each.
struct TExactOption {
  std::string_view word;      // of the option after "--", and in front of its line in a task file
  std::string_view argument;  // as the help shows it; empty for a switch
  bool many = false;          // it may be given several times
  std::string_view caption;   // of its field in the window
  std::string_view help;
  void (*take)(TExactWishes& wishes, const std::string& argument);  // raises for an argument that cannot be
  TStringList (*given)(
      const TExactWishes& wishes);  // its arguments, none where it was not given; one empty for a switch
  bool of_run = false;              // it is about runs, and nothing to a comparison
};
std::span<const TExactOption> ExactOptions();

// One option a line, as a task file keeps them: "definer strip"; empty for none.
std::string ExactWishesText(const TExactWishes& wishes);
// Raises for a line that is none of these.
TExactWishes ReadExactWishes(const std::string& text);
// What is asked for now, and of each option that is not what `kept` asks for.
TExactWishes JoinWishes(const TExactWishes& now, const TExactWishes& kept);

}  // namespace velmora
