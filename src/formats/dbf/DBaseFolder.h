#pragma once

// A folder of dBASE III, IV files.

#include <memory>
#include <string>

#include "formats/port/FileReader.h"

namespace velmora {

// Raises an error that names the folder and the fault.
std::unique_ptr<TFileReader> OpenDBaseFolder(const std::string& folder);

}  // namespace velmora
