// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "exact/objects/ObjectsAcross.h"
#include "exact/run/PairReader.h"

namespace velmora {

// Tables of the reference that are skipped, or left out and not on the target.
std::vector<TTableNotMade> TablesNotMade(const TReadPair& pair);

}  // namespace velmora
