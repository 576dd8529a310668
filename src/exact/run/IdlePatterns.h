// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Patterns that name nothing: a letter that slipped is not to pass for a comparison without differences.

#include <vector>

#include "exact/run/PairReader.h"
#include "exact/run/Selection.h"
#include "util/Lists.h"

namespace velmora {

// Those that name nothing of what either side has, as they were given. One of * alone may stand for nothing, and so may
// what names objects, where `objects` are not compared.
TStringList IdlePatterns(const std::vector<TPattern>& patterns, const TReadPair& read, bool objects);

}  // namespace velmora
