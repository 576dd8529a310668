// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "foreign/Facts.h"
#include "util/Lists.h"

namespace velmora {

// The condition of a check in MySQL's language: comparisons of columns with each other and with literals, joined by
// "and", "or" and "not". Nothing for any other. `columns` are the source's names, `names` MySQL's for the same.
std::optional<std::string> MakeCheck(const TForeignCheck& check, const TStringList& columns, const TStringList& names);

}  // namespace velmora
