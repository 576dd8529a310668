// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// New columns whose default gives another value each time, as uuid() and rand() do. Servers that print such defaults in
// brackets refuse them together with the column, but take them for a column that is there: it comes without one, gets
// its values where it must have some, and then its default.

#include <string>

#include "exact/plan/PlanClauses.h"

namespace velmora {

bool IsFilledLater(const TChange& change, const TTableWork& work);

// Whether a new column gets its values by an "update" of all rows, as it may not be NULL.
bool IsFilledByUpdate(const TChange& change);

// A change of a column to such a default has to wait, too, where the statement adds any column.
bool GetsDefaultLater(const TChange& change, const TTableWork& work);

// A column's text without its default, and visible; `nulls` allows NULL.
std::string TextWithoutDefault(const std::string& column, bool nulls);

// Such a column comes with the server's own first value instead of NULL if it is in a primary key that is there
// already, or that a counter makes different in every row.
bool ComesNotNull(const TChange& change, const TTableWork& work);

// Whether the key has such a column of the table's changes that comes with NULL.
bool NamesFilledColumn(const TElementText& key, const TTableWork& work);

// The "update" that gives values to those of them that may not be NULL, and leaves columns alone that note the time of
// every update; an empty text for none.
TPlanStatement FillingStatement(const TTableWork& work);

}  // namespace velmora
