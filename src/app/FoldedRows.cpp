// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FoldedRows.h"

#include <algorithm>

namespace velmora {

std::vector<TRowStretch> DifferingStretches(const TAlignedRows& rows) {
  std::vector<TRowStretch> stretches;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (!Differs(rows[i])) continue;
    if (stretches.empty() || stretches.back().last != i) stretches.push_back({i, i});
    ++stretches.back().last;
  }
  return stretches;
}

std::vector<TRowStretch> FoldEqualRows(const TAlignedRows& rows, std::size_t context) {
  std::vector<TRowStretch> result;
  std::size_t done = 0;
  // All rows up to those that are shown from `first` to before `last`.
  const auto show = [&](std::size_t first, std::size_t last) {
    if (first > done + 1)
      result.push_back({done, first, true});
    else
      first = done;
    if (last > first) result.push_back({first, last});
    done = std::max(done, last);
  };
  if (!rows.empty()) show(0, 1);
  for (const TRowStretch& stretch : DifferingStretches(rows))
    show(std::max(done, stretch.first - std::min(stretch.first, context)),
         std::min(stretch.last + context, rows.size()));
  show(rows.size(), rows.size());
  return result;
}

}  // namespace velmora
