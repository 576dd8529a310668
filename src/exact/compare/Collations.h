#pragma once

// Character sets and collations that the one server has and the other one does not.

#include <map>
#include <string>
#include <vector>

#include "core/DBConn.h"
#include "exact/compare/Changes.h"

namespace velmora {

// Names of the reference's character sets and collations, in lower case, and what the target takes instead.
using TCollationMap = std::map<std::string, std::string>;

// Takes "a=b". Raises for what is not two names, and for collations of different character sets, which would change
// what a column holds.
void AddToCollationMap(const std::string& mapping, TCollationMap& map);

// Replaces the names wherever a creation text says "character set", "charset" or "collate".
void MapCollations(const TCollationMap& map, std::string& ddl);

// Marks the changes as unsafe that bring in a name which `target` does not know. Only of names that none of the
// target's own `texts` holds is its server asked; a target that answers no queries is believed to know them all.
void MarkUnknownCollations(TDBConn& target, const std::map<std::string, std::string>& texts,
                           std::vector<TChange>& changes);

}  // namespace velmora
