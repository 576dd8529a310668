// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "util/Variant.h"

namespace velmora {

// What a workbook may hold for all its sheets together. A small file can claim any number of cells, and a text that
// takes a few bytes there may be shared by all of them.
class TSheetBudget {
 public:
  void Take(const TVariant& value);  // raises an error when a cell with that value is one too many

 private:
  std::uint64_t cells_ = 0;
  std::uint64_t text_ = 0;  // bytes
};

}  // namespace velmora
