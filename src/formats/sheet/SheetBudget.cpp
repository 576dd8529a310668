// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/SheetBudget.h"

#include <string>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kManyCells[] = "it has more than %d cells that hold something";
constexpr char kMuchText[] = "the texts of its cells have more than %d bytes";

constexpr std::uint64_t kMostCells = 20'000'000;
constexpr std::uint64_t kMostText = 1ULL << 30U;

}  // namespace

void TSheetBudget::Take(const TVariant& value) {
  if (++cells_ > kMostCells) RaiseError(Format(kManyCells, kMostCells));
  if (const auto* text = std::get_if<std::string>(&value)) text_ += text->size();
  if (text_ > kMostText) RaiseError(Format(kMuchText, kMostText));
}

}  // namespace velmora
