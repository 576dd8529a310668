// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace velmora::bench {

struct TSample {
  int tables = 1000;
  int differing_percent = 5;    // of the target's tables
  bool auto_increment = false;  // every table of the target has counted on, as in a live pair
};

// Creation texts of a database: 12 columns and 3 keys a table, every third one with a foreign key. The same numbers
// give the same texts; `target` has the differences.
std::string SampleScript(const TSample& sample, bool target);

}  // namespace velmora::bench
