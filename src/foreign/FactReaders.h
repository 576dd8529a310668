// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The one table of fact readers: which engine's source is read by which of them.

#include <memory>
#include <vector>

#include "core/DBConn.h"
#include "foreign/Facts.h"

namespace velmora {

// Of an engine that is not MySQL. Null for one whose facts nobody reads.
std::unique_ptr<TFactReader> MakeFactReader(TDBConn& conn);

// Whether there is one: whether such a source can be a reference.
bool HasFactReader(TDBConn& conn);
// The engines (core/Engines.h) that have one, by number.
std::vector<int> EnginesWithFacts();

}  // namespace velmora
