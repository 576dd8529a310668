// SPDX-License-Identifier: GPL-3.0-or-later

// A sheet of Lotus 1-2-3 through its library, in this process.

#include "Harnesses.h"
#include "Input.h"
#include "formats/sheet/LotusFile.h"

namespace velmora::fuzzing {

void FuzzLotus(std::string_view input) { ReadAll(*OpenLotusFileHere(PutFiles({{"sheet", input}}) + "/sheet")); }

}  // namespace velmora::fuzzing
