// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What differs within two lines of SQL, word by word.

#include <cstddef>
#include <string_view>
#include <vector>

namespace velmora {

struct TLetters {  // bytes of a line, from 0; as many as none where something is missing at a place
  std::size_t first = 0;
  std::size_t last = 0;
  bool operator==(const TLetters&) const = default;
};

struct TLetterHunk {
  TLetters left, right;
};

// In order, and none next to another. Blanks outside quotes do not count, nor does letter case outside ' and ". Lines
// of many words are taken as one hunk from their first difference to the last one.
std::vector<TLetterHunk> DifferingLetters(std::string_view left, std::string_view right);

}  // namespace velmora
