// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Triggers of one table and moment fire one after the other.

#include <cstddef>
#include <string>
#include <vector>

#include "exact/objects/ObjectText.h"
#include "util/Lists.h"

namespace velmora {

// Where a trigger is to stand among those that fire with it.
struct TTriggerPlace {
  std::size_t rank = 0;  // among them, from 0
  TStringList before{};  // that fire before it in the reference, the nearest first
  TStringList added{};   // those of them that the target does not have yet, or elsewhere
  std::string next{};    // the first that fires after it and stays where it is; empty for none
  std::string old{};     // "follows `a`", "precedes `b`": where it stands in the target; empty where it is alone
};

// A trigger of the reference.
struct TOrderedTrigger {
  std::string name;
  const TObjectText* wanted = nullptr;
  const TObjectText* there = nullptr;  // of the target, null where it has none
  int wanted_order = 0;                // by their servers; 0 where nobody knows, and then the place in the list counts
  int there_order = 0;
  std::size_t there_place = 0;  // in the target's list
  bool recreated = false;       // whatever its place is
  bool moved = false;           // found: nothing but its place is another
  TTriggerPlace place{};        // found
};

// Finds the fewest that have to be made anew so that all fire in the reference's order, and where.
void OrderTriggers(std::vector<TOrderedTrigger>& triggers);

}  // namespace velmora
