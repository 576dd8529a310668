// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "persist/MachineValues.h"
#include "util/Lists.h"

namespace velmora {

// The names that a text of the form of "tnsnames.ora" defines, in its order: those outside parentheses, quotes and
// comments.
TStringList TnsNames(std::string_view text);

// The service names of this machine's Oracle client, whose home is a value of the machine; none when that is empty.
// Raises as ReadRegStringHKLM does where there is no client, and "Cannot read %s: %s" for its "tnsnames.ora".
TStringList OracleServices(const std::string& machine_values = kMachineValuesFile);

}  // namespace velmora
