// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What shells complete of the companion's commands: programs for bash, zsh and fish.

#include <string>

#include "cli/CommandTables.h"

namespace velmora {

std::string BashCompletions(const TCommandTable& program);
std::string ZshCompletions(const TCommandTable& program);
std::string FishCompletions(const TCommandTable& program);

}  // namespace velmora
