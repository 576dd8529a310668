// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/TaskMarks.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "util/Text.h"

namespace velmora {

const char* ColourWord(ETaskColour colour) { return kTaskColours[static_cast<std::size_t>(colour)]; }

std::optional<ETaskColour> FindColour(const std::string& word) {
  const auto* found = std::ranges::find_if(kTaskColours, [&](const char* known) { return SameText(known, word); });
  if (found == std::end(kTaskColours)) return std::nullopt;
  return static_cast<ETaskColour>(found - std::begin(kTaskColours));
}

}  // namespace velmora
