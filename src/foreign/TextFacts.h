// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "core/DBConn.h"
#include "foreign/Facts.h"

namespace velmora {

// Of folders of text files, delimited or of fixed width: columns as the data show them, and nothing else.
std::unique_ptr<TFactReader> MakeTextFacts(TDBConn& conn);

}  // namespace velmora
