// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "core/Meta.h"

namespace velmora::testing {

// The rows of a store as text, one per line, each with its line end; what is at its default is left out. Moves no
// cursor and fetches nothing.
//
//   table t InnoDB fetched
//   column a <DECIMAL>(10,2) notnull default='0' autoinc
//   key primary key(a,b) primary unique fulltext
//   constraint f(a,b)->p(x,y) delete=set null update=cascade
//
// The size or precision that is null shows as "-"; both null show no brackets. A constraint that is no foreign key
// shows its constraint_type as "type=3", and its texts.
std::string DumpMeta(const TMeta& meta);

}  // namespace velmora::testing
