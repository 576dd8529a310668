// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Relations between the tables of a Jet database, as its table MSysRelationships keeps them: a row for each pair of
// columns. The bits of grbit are published as DAO's RelationAttributeEnum.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "formats/mdb/MdbDatabase.h"
#include "formats/port/FileReader.h"

namespace velmora {

// By the name of the referencing table in lower case, in the order of the file.
using TMdbRelations = std::map<std::string, std::vector<TFileReference>>;

// `page` is the first of the definition of MSysRelationships.
TMdbRelations ReadMdbRelations(const TMdbDatabase& database, std::uint32_t page);

}  // namespace velmora
