// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A folder, or a database (.dbc), of FoxPro.

#include <memory>
#include <string>

#include "formats/port/FileReader.h"

namespace velmora {

// Raises an error that names the folder or file and the fault.
// `code_page`: of all files, whatever they say; empty: of each its own.
std::unique_ptr<TFileReader> OpenFoxProFolder(const std::string& folder, const std::string& code_page = {});

}  // namespace velmora
