// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace velmora {

// `text` with `mark` where it names `database` in front of a name. What stands in quotes is left as it is. Raises the
// faults of Tokens.
std::string WithOwnNameAs(const std::string& mark, const std::string& text, const std::string& database);

}  // namespace velmora
