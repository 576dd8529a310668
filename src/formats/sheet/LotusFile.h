// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Sheets of Lotus 1-2-3 as libwps reads them, within this process.

#include <memory>
#include <string>
#include <vector>

#include "formats/port/FileReader.h"
#include "formats/sheet/SheetTable.h"

namespace velmora {

// The sheets of a file (wk3, wk4; also wk1 and 123 as far as the library goes) in their order, results of formulas
// included. The library rounds a date with a time of day to the nearest day, and has no value for a time that is a day
// or more. Raises an error that names the file, the fault, and what to do about it.
std::vector<TSheet> ReadLotusSheets(const std::string& path);

// OpenLotusFile without a process around it.
std::unique_ptr<TFileReader> OpenLotusFileHere(const std::string& path);

}  // namespace velmora
