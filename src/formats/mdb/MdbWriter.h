// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Writes an Access file.

#include <string>

namespace velmora {

// An empty database of Jet 4, about 45 KB; the file must not be there. Raises an error that names the file.
void CreateMdbFile(const std::string& path);

}  // namespace velmora
