// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What this process holds of the system at the moment.

#include <string>

namespace velmora::bench {

struct TFootprint {
  long resident = 0;  // KB, after free memory was given back
  long peak = 0;      // KB
  int files = 0;      // descriptors
  int threads = 0;
  int children = 0;
};

TFootprint Footprint();
std::string FootprintLine(const TFootprint& footprint);  // the numbers, in this order

// Whether a walk of so many rounds tells its footprint after round `done`: early ones, 100, and the last among them.
bool TellsAfter(int done, int rounds);

}  // namespace velmora::bench
