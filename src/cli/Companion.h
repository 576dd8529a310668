#pragma once

#include <string>
#include <vector>

#include "cli/Console.h"

namespace velmora {

// Runs the companion with the arguments behind the program's name and gives the exit status: the command's own, or 2
// with one line on the console's `err` for arguments that make no command and for any error.
int RunCompanion(const std::vector<std::string>& arguments, TConsole& console);

}  // namespace velmora
