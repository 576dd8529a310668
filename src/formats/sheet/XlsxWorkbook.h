// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Excel workbooks from 2007 on (ECMA-376, also by its strict form): a Zip archive of XML documents.

#include <string_view>
#include <vector>

#include "formats/sheet/SheetTable.h"

namespace velmora {

// As ReadBiffWorkbook, out of the bytes of a whole file. What is unpacked and kept of it is bounded.
std::vector<TSheet> ReadXlsxWorkbook(std::string_view bytes);

}  // namespace velmora
