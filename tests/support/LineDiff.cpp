// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/LineDiff.h"

#include <algorithm>
#include <vector>

#include "util/Lists.h"

namespace velmora::testing {

std::string LineDiff(const std::string& expected, const std::string& actual) {
  if (expected == actual) return {};
  const TStringList a = LinesOf(expected), b = LinesOf(actual);
  // common[i][j]: how many lines a[i..] and b[j..] have in common, in order
  std::vector<std::vector<std::size_t>> common(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = a.size(); i-- > 0;)
    for (std::size_t j = b.size(); j-- > 0;)
      common[i][j] = a[i] == b[j] ? common[i + 1][j + 1] + 1 : std::max(common[i + 1][j], common[i][j + 1]);

  std::string diff;
  std::size_t i = 0, j = 0;
  while (i < a.size() || j < b.size()) {
    if (i < a.size() && j < b.size() && a[i] == b[j]) {
      diff += "  " + a[i++] + "\n";
      ++j;
    } else if (j == b.size() || (i < a.size() && common[i + 1][j] >= common[i][j + 1])) {
      diff += "- " + a[i++] + "\n";
    } else {
      diff += "+ " + b[j++] + "\n";
    }
  }
  return diff;
}

}  // namespace velmora::testing
