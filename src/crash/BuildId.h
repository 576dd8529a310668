// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace velmora {

// What the linker has marked this very program with, in hexadecimal digits: no two builds share it. Empty where the
// program has no such mark.
std::string BuildId();

}  // namespace velmora
