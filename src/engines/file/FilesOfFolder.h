// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "util/Lists.h"

namespace velmora {

// The names of the files in a folder with these extensions, which come without dots, one extension after the other.
// None where there is no such folder. The folder is gone through aside (util/Aside.h).
TStringList FilesAside(const std::string& folder, TStringList extensions);

}  // namespace velmora
