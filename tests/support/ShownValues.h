// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Values and rows as text, for goldens.

#include <string>
#include <vector>

#include "util/Variant.h"

namespace velmora::testing {

// A value with its kind, as in "int 5", "truth True", "moment 2001-02-03", "text a\x00", "null"; what stands ten times
// or more in a row shows as in "{x*600}".
std::string ShownValue(const TVariant& value);
std::string ShownRow(const std::vector<TVariant>& row);  // joined by "|"

}  // namespace velmora::testing
