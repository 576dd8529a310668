// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "core/DBConn.h"
#include "foreign/Facts.h"

namespace velmora {

// Of the engine of Access files: types by Access's own words, what may be null, defaults, rules, descriptions, keys,
// and the relations that Access looks after. Null for an engine that is another one.
std::unique_ptr<TFactReader> MakeAccessFacts(TDBConn& conn);

}  // namespace velmora
