// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The controlling terminal of the process.

#include <string>

namespace velmora {

bool HasTerminal();

// Asks on the terminal itself, whatever the standard streams are; with `secret` without echo. Ctrl+C and the end of
// input raise EAbort, the terminal being as it was before.
std::string AskOnTerminal(const std::string& question, bool secret);

}  // namespace velmora
