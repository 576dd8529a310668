#pragma once

// New columns whose default gives another value each time, as uuid() and rand() do. Servers that print such defaults in
// brackets refuse them together with the column, but take them for a column that is there: it comes without one, gets
// its values where it must have some, and then its default.

#include <string>

#include "exact/plan/PlanClauses.h"

namespace velmora {

bool IsFilledLater(const TChange& change, const TTableWork& work);

// A change of a column to such a default has to wait, too, where the statement adds any column.
bool GetsDefaultLater(const TChange& change, const TTableWork& work);

// A column's text without its default; `nulls` allows NULL.
std::string TextWithoutDefault(const std::string& column, bool nulls);

// Whether the key has such a column of the table's changes.
bool NamesFilledColumn(const TElementText& key, const TTableWork& work);

// The "update" that gives values to those of them that may not be NULL, and leaves columns alone that note the time of
// every update; an empty text for none.
TPlanStatement FillingStatement(const TTableWork& work);

}  // namespace velmora
