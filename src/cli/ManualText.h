// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The part of the companion's manual page that its commands are in: commands, options, sources, as scdoc reads them.

#include <string>

#include "cli/CommandTables.h"

namespace velmora {

std::string ManualText(const TCommandTable& program);

}  // namespace velmora
