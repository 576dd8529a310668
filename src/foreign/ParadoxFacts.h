// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "core/DBConn.h"
#include "foreign/Facts.h"

namespace velmora {

// Of folders of Paradox tables: fields, the primary key, and the secondary keys whose files stand beside a table.
std::unique_ptr<TFactReader> MakeParadoxFacts(TDBConn& conn);

}  // namespace velmora
