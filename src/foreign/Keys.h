// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Keys of a source in MySQL, which limits their bytes.

#include <functional>

#include "foreign/MappedSchema.h"
#include "foreign/Names.h"

namespace velmora {

// Whether a key over a column of this type needs to say how much of it counts.
bool NeedsPrefix(const TColumnText& type);

// The keys of `facts` over the columns of `table`, whose types are settled. What is left out or changed is told there.
void MapKeys(const TForeignTable& facts, const TMapContext& context, TMappedTable& table);

}  // namespace velmora
