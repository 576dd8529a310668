#pragma once

// Excel workbooks as freexl reads them, within this process.

#include <memory>
#include <string>
#include <vector>

#include "formats/port/FileReader.h"
#include "formats/sheet/SheetTable.h"

namespace velmora {

// The sheets of a workbook (BIFF5, BIFF8) in their order, all of them read. Cells with formulas are empty here and
// named ranges are left out, since the library passes both over; truth values are 1 and 0, and, as it cannot be told
// apart, a faulty value such as #N/A is 1 too. Raises an error that names the file, the fault, and what to do about it.
std::vector<TSheet> ReadExcelSheets(const std::string& path);

// OpenExcelFile without a process around it.
std::unique_ptr<TFileReader> OpenExcelFileHere(const std::string& path, bool names, bool mixed_as_text);

}  // namespace velmora
