// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace velmora {

// Our folder among the user's configuration: "velmora" below $XDG_CONFIG_HOME, or below .config in the home folder.
// It need not exist. Empty when the user has no home.
std::string UserConfigFolder();
std::string UserConfigFile(const std::string& name);  // in that folder; empty when there is none

// Where crash reports go: "velmora/crashes" below $XDG_STATE_HOME, or below .local/state in the home folder. It need
// not exist. Empty when the user has no home.
std::string CrashFolder();

}  // namespace velmora
