// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Excel workbooks, read within this process.

#include <memory>
#include <string>
#include <vector>

#include "formats/port/FileReader.h"
#include "formats/sheet/SheetTable.h"

namespace velmora {

// The sheets of a workbook of Excel from release 5 on in their order, all of them read: see ReadBiffWorkbook and
// ReadXlsxWorkbook. Its name does not matter. Raises an error that names the file, the fault, and what to do about it.
std::vector<TSheet> ReadExcelSheets(const std::string& path);

// OpenExcelFile without a process around it.
std::unique_ptr<TFileReader> OpenExcelFileHere(const std::string& path, bool names, bool mixed_as_text);

}  // namespace velmora
