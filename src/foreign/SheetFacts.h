// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "core/DBConn.h"
#include "foreign/Facts.h"

namespace velmora {

// Of the engines of Excel and Lotus files: columns by their cells. Null for an engine that is another one.
std::unique_ptr<TFactReader> MakeExcelFacts(TDBConn& conn);
std::unique_ptr<TFactReader> MakeLotusFacts(TDBConn& conn);

}  // namespace velmora
