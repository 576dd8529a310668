// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "app/Difference.h"
#include "exact/run/Selection.h"
#include "util/Lists.h"

namespace velmora {

// Which differences a filter shows. Its text has words with blanks between. A word with a kind in front ("view:v_*"),
// or with * or ? in it, is a pattern as a selection has it; what is still being typed ("view:", "column:t.") stands for
// all that may follow. Any other word has to stand in a difference's name, kind, state ("new", "changed", "obsolete",
// "unsafe") or in what changes; letter case does not count.
class TDifferenceFilter {
 public:
  explicit TDifferenceFilter(const std::string& text = {});

  bool operator==(const TDifferenceFilter& other) const;

  // Whether every word stands in it and, where there are patterns, one of them names it. `words` is what
  // FilteredWords gives.
  bool Shows(const TDifference& difference, const std::string& words) const;

 private:
  TStringList words_;  // lower case
  std::vector<TPattern> patterns_;
};

std::string FilteredWords(const TDifference& difference);  // that a filter looks in, lower case

}  // namespace velmora
