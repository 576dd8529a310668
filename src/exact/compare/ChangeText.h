// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "exact/compare/Changes.h"

namespace velmora {

// What a change does to its element, on one line of bounded length: "varchar(300) -> varchar(255), null -> not null",
// "(a) -> (a, b)", "after total", "12 columns". Of what is new or goes, what that is. What only servers write in
// different ways may be told as changed. `target` and `reference` are the change's table on each side, null where there
// is none.
std::string ChangeDetail(const TChange& change, const TTableText* target, const TTableText* reference);

}  // namespace velmora
