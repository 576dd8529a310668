#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "exact/compare/Equivalences.h"
#include "util/Lists.h"

namespace velmora {

using TLinePair = std::pair<std::vector<std::size_t>, std::vector<std::size_t>>;  // of each side, from 0

// The lines that a longest common sequence of lines leaves out. Beyond a bound of work all lines between the first and
// the last difference count.
TLinePair DifferingLines(const TStringList& a, const TStringList& b);

// The same of two creation texts by what their lines mean: commas at their ends, what `use` takes as equal and the
// order of keys do not count. A text that cannot be read is compared letter by letter.
TLinePair DifferingLines(const std::string& a, const std::string& b, TEquivalenceUse use);

}  // namespace velmora
