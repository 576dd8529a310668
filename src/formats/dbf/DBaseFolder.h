// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A folder of dBASE III, IV files.

#include <memory>
#include <string>

#include "formats/port/FileReader.h"

namespace velmora {

// Raises an error that names the folder and the fault.
// `code_page`: of all files, whatever they say; empty: of each its own.
std::unique_ptr<TFileReader> OpenDBaseFolder(const std::string& folder, const std::string& code_page = {});

}  // namespace velmora
