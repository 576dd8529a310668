// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Which rows of two texts side by side are shown, and where one goes from difference to difference.

#include <cstddef>
#include <vector>

#include "app/AlignedTexts.h"

namespace velmora {

struct TRowStretch {
  std::size_t first = 0;
  std::size_t last = 0;  // the row after it
  bool folded = false;   // a line in its place tells how many rows it has
};

// All rows in order. Folded are those away from every difference by more than `context` rows, where that saves a line;
// never the first row.
std::vector<TRowStretch> FoldEqualRows(const TAlignedRows& rows, std::size_t context);

// Rows that differ, one after another, as one stretch.
std::vector<TRowStretch> DifferingStretches(const TAlignedRows& rows);

}  // namespace velmora
