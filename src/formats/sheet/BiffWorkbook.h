// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Excel workbooks before 2007 (BIFF5 of Excel 5 and 95, BIFF8 of Excel 97 to 2003).

#include <string_view>
#include <vector>

#include "formats/sheet/SheetTable.h"

namespace velmora {

// The worksheets in their order, hidden ones included; charts, macro sheets and modules are none. A cell with a formula
// has the value that was last computed for it. Truth values are 1 and 0, faulty values such as #N/A and empty texts are
// no cells. `stream` is the workbook without the compound file around it. Raises errors that say what is wrong with it,
// but not which file it is.
std::vector<TSheet> ReadBiffWorkbook(std::string_view stream);

}  // namespace velmora
