// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace velmora {

// Values of the machine stand in this file, which its administrator writes; see ValueStore.h for its form.
inline constexpr char kMachineValuesFile[] = "/etc/velmora/machine.values";

inline constexpr char kOracleHome[] = "\\SOFTWARE\\ORACLE\\HOME0\\ORACLE_HOME";  // the folder of an Oracle client

// A text value of the machine. `path` is key and name in one: what stands after the last backslash is the name. A
// missing value is the empty text. Raises "ReadRegStringHKLM - neispravan key" for a path without a backslash and
// "ReadRegStringHKLM - ne postoji key" for a key that is not there.
std::string ReadRegStringHKLM(const std::string& path, const std::string& file = kMachineValuesFile);

}  // namespace velmora
