#pragma once

#include <memory>
#include <string>

#include "engines/oledb/FileReader.h"

namespace velmora {

// The reader behind OpenMdbFile, in this process: a damaged file may end it.
std::unique_ptr<TFileReader> OpenMdbFileHere(const std::string& path);

}  // namespace velmora
