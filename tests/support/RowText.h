// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "core/Dataset.h"
#include "util/Dates.h"
#include "util/Variant.h"

namespace velmora::testing {

// The values of the current row, "-" for null.
inline std::string RowText(const TDataset& rows) {
  std::string text;
  for (std::size_t i = 0; i < rows.Fields().size(); ++i) {
    const TVariant& value = rows.Value(i);
    const TMoment* moment = std::get_if<TMoment>(&value);
    if (i > 0) text += "|";
    text += VarIsNull(value) ? "-" : moment != nullptr ? DateTimeText(moment->value) : VarToText(value);
  }
  return text;
}

}  // namespace velmora::testing
