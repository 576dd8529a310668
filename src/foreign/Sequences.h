// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How defaults and triggers of servers take numbers from a sequence or generator.

#include <string_view>

#include "foreign/Facts.h"

namespace velmora {

// Whether an expression is the next value of a sequence and nothing else: GEN_ID(G, 1), NEXT VALUE FOR S, S.NEXTVAL.
bool IsNextValue(std::string_view expression);

// What the body of a trigger before inserts does with a column: counts it, where it sets it to the next value of a
// sequence; unclear, where it sets it to something else and reads a sequence, too.
ECounting CountingBy(std::string_view body, std::string_view column);

}  // namespace velmora
