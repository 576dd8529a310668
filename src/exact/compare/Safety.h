// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a change may cost.

#include <string>

#include "exact/compare/Changes.h"
#include "mysqltext/TableText.h"

namespace velmora {

// "first; second"; an empty one adds nothing.
void AddReason(std::string& reasons, const std::string& reason);

// Why making `to` of `from` may lose data or fail on rows that are there; empty when it cannot.
std::string UnsafeColumnChange(const TColumnText& from, const TColumnText& to);
// Whether the column's values stay what they are, but for their character set and what sorts them.
bool KeepsValues(const TColumnText& from, const TColumnText& to);
// The same as UnsafeColumnChange for any change; used for each of CompareTableTexts already.
std::string UnsafeChange(const TChange& change, const TTableText& target, const TTableText& reference);

}  // namespace velmora
