// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace velmora::testing {

// What differs between two texts, line by line: "-" for lines of `expected` alone, "+" for lines of `actual` alone, a
// blank for what both have. Empty when they are equal. For short texts: the time grows with the product of the lengths.
std::string LineDiff(const std::string& expected, const std::string& actual);

}  // namespace velmora::testing
