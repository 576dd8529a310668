// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/CommandTables.h"
#include "cli/Console.h"
#include "util/Lists.h"

namespace velmora {

// Raises where more than one argument is to be read from standard input, which can be done once. Who sits at a terminal
// hears that it is waited for. `arguments`: what stands behind the command's words.
void CheckStandardInput(const TCommandTable& command, const TStringList& arguments, TConsole& console);

}  // namespace velmora
