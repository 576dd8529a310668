// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace velmora {

// Scrambles a literal that is kept out of plain view in the program, and unscrambles it: the routine is its own
// inverse. This hides nothing from anybody who looks for it.
std::string DecodeStr(std::string_view scrambled);

}  // namespace velmora
