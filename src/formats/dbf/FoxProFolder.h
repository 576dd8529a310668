#pragma once

// A folder, or a database (.dbc), of FoxPro.

#include <memory>
#include <string>

#include "formats/port/FileReader.h"

namespace velmora {

// Raises an error that names the folder or file and the fault.
std::unique_ptr<TFileReader> OpenFoxProFolder(const std::string& folder);

}  // namespace velmora
