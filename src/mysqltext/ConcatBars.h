// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

namespace velmora {

// A text in which "||" joins letters, as it does in the mode PIPES_AS_CONCAT, in words that say the same in every mode,
// and as servers print them: concat(concat(a, b), c). Nothing where it is not certain what one of them joins. Raises as
// the lexer does.
std::optional<std::string> WithoutConcatBars(std::string text);

}  // namespace velmora
