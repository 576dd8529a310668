// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace velmora {

inline constexpr char kProgramTitle[] = "Velmora";
inline constexpr int kVersionMajor = 2;
inline constexpr int kVersionMinor = 0;
inline constexpr int kVersionBuild = 0;

// "%d.%d", or "%d.%d.%d" when the build number is not 0.
std::string VersionText(int major = kVersionMajor, int minor = kVersionMinor, int build = kVersionBuild);
std::string AppTitle();  // the program's title and version, as windows show them

}  // namespace velmora
