// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Access (Jet 3 and 4) over libmdb, which asks for no password.

#include <memory>
#include <string>

#include "formats/port/FileReader.h"

namespace velmora {

// Reads the file in this process, which a damaged one may end; others may have it open meanwhile. Raises errors that
// name the file and the fault.
std::unique_ptr<TFileReader> OpenMdbFileHere(const std::string& path);

}  // namespace velmora
