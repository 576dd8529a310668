// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Two creation texts side by side: which lines stand beside which, and what differs in them.

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/LetterDiff.h"
#include "exact/compare/Equivalences.h"

namespace velmora {

enum ESide { kLeft, kRight };

enum class EAlignedRow {
  Same,   // to the letter
  Equal,  // but for what does not count; of a key that stands elsewhere, with nothing beside it
  Changed,
  OnlyLeft,
  OnlyRight
};

struct TAlignedSide {
  std::optional<std::size_t> line;  // from 0; none where nothing stands beside the other side's line
  std::vector<TLetters> counts;     // what differs and counts; of a line that is on one side only, none
  std::vector<TLetters> ignored;    // what differs and does not
};

struct TAlignedRow {
  EAlignedRow kind = EAlignedRow::Same;
  std::array<TAlignedSide, 2> sides = {};  // by ESide; one has a line at least
  std::string note = {};                   // what to know of it: equivalences by their names, where a moved line stands
  bool moved = false;                      // the other text has the element too, elsewhere
  std::string item = {};                   // of texts that are read: the element's name, "options", "partitioning"
};

inline bool Differs(const TAlignedRow& row) { return row.kind != EAlignedRow::Same && row.kind != EAlignedRow::Equal; }

// Every line of both texts stands in one row, in its order. The first row has a line of each text that is not empty.
using TAlignedRows = std::vector<TAlignedRow>;

// Columns, keys, constraints stand beside those of their name, options beside options. What `use` takes as equal,
// commas, blanks, and the order of keys do not count. Columns that stand elsewhere are on one side only, and as few as
// can be. Texts that cannot be read, or not by their lines, are aligned line by line. The work grows with the length of
// the texts, but for the logarithm.
TAlignedRows AlignTexts(const std::string& left, const std::string& right, TEquivalenceUse use);

}  // namespace velmora
