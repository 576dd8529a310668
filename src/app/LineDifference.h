#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "util/Lists.h"

namespace velmora {

// The lines of each side, from 0, that a longest common sequence of lines leaves out. Beyond a bound of work all lines
// between the first and the last difference count.
std::pair<std::vector<std::size_t>, std::vector<std::size_t>> DifferingLines(const TStringList& a,
                                                                             const TStringList& b);

}  // namespace velmora
