// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The readers of formats whose files are large or read by libraries that were not made for damaged ones, each in a
// process of its own. All
// raise errors that name the file and the fault. Paths come from users; a missing file, a folder where a file is wanted
// and the like are named as such. What was left out when the program was built is not defined.

#include <memory>
#include <string>

#include "formats/port/FileReader.h"

namespace velmora {

// Access (Jet 3 and 4) over libmdb, which asks for no password. Others may have the file open meanwhile.
std::unique_ptr<TFileReader> OpenMdbFile(const std::string& path);
// A workbook of Excel (BIFF5, BIFF8, or from 2007 on). `names`: the first row of a sheet holds the names of its
// columns; `mixed_as_text`: a column of several kinds is text, else it is of the kind that most of its cells have.
std::unique_ptr<TFileReader> OpenExcelFile(const std::string& path, bool names, bool mixed_as_text);
// A sheet of Lotus 1-2-3 (wk3, wk4) over libwps; the first row holds names, mixed columns are text.
std::unique_ptr<TFileReader> OpenLotusFile(const std::string& path);

}  // namespace velmora
