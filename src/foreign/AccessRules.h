// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Conditions as Access writes them: validation rules of columns and tables.

#include <string>
#include <string_view>

namespace velmora {

// The same in the common form: texts and days in single quotes, patterns with % and _ (and sets in brackets where these
// do not do), "=" in front of a value that stands alone in the rule of a column, "Is" in front of such a "Null". What
// has no such form stays as it is.
std::string PlainCondition(std::string_view rule, bool of_column);

}  // namespace velmora
