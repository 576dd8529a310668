// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace velmora {

// Every run of white space as one blank, none at the ends.
std::string OnOneLine(const std::string& text);

}  // namespace velmora
