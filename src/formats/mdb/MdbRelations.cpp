// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mdb/MdbRelations.h"

#include <algorithm>
#include <array>
#include <tuple>

#include "formats/mdb/MdbRows.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::uint32_t kNotEnforced = 0x2;
constexpr std::uint32_t kUpdateCascades = 0x100;
constexpr std::uint32_t kDeleteCascades = 0x1000;
constexpr std::uint32_t kDeleteSetsNull = 0x2000;

struct TPair {
  std::string relation;
  std::int64_t place;  // of the pair in the relation
  std::uint32_t bits;
  std::string child, column, parent, parent_column;
};

std::vector<TPair> ReadPairs(const TMdbDatabase& database, std::uint32_t page) {
  const TMdbTableDef table(database, "MSysRelationships", page);
  const TMdbValueReader values(database, table);
  const std::size_t name = table.PlaceOf("szRelationship"), place = table.PlaceOf("icolumn"),
                    bits = table.PlaceOf("grbit"), child = table.PlaceOf("szObject"),
                    column = table.PlaceOf("szColumn"), parent = table.PlaceOf("szReferencedObject"),
                    parent_column = table.PlaceOf("szReferencedColumn");
  std::vector<TPair> pairs;
  for (const std::uint32_t number : table.Pages()) {
    for (const TMdbStoredRow& stored : table.RowsOn(number)) {
      const TMemDataset::TRow row = values.Row(stored);
      const auto text = [&](std::size_t at) { return VarToText(row[at]); };
      pairs.push_back({text(name), VarToInt(row[place]), static_cast<std::uint32_t>(VarToInt(row[bits])), text(child),
                       text(column), text(parent), text(parent_column)});
    }
  }
  return pairs;
}

const char* DeleteRule(std::uint32_t bits) {
  if ((bits & kDeleteCascades) != 0) return "CASCADE";
  return (bits & kDeleteSetsNull) != 0 ? "SET NULL" : "NO ACTION";
}

TFileReference ReferenceOf(const TPair& pair) {
  return {.name = pair.relation,
          .columns = {},
          .parent = pair.parent,
          .parent_columns = {},
          .enforced = (pair.bits & kNotEnforced) == 0,
          .on_update = (pair.bits & kUpdateCascades) != 0 ? "CASCADE" : "NO ACTION",
          .on_delete = DeleteRule(pair.bits)};
}

}  // namespace

TMdbRelations ReadMdbRelations(const TMdbDatabase& database, std::uint32_t page) {
  std::vector<TPair> pairs = ReadPairs(database, page);
  std::ranges::stable_sort(pairs, [](const TPair& a, const TPair& b) {
    return std::tie(a.child, a.relation, a.place) < std::tie(b.child, b.relation, b.place);
  });
  TMdbRelations relations;
  for (const TPair& pair : pairs) {
    std::vector<TFileReference>& references = relations[LowerText(pair.child)];
    if (references.empty() || references.back().name != pair.relation) references.push_back(ReferenceOf(pair));
    references.back().columns.push_back(pair.column);
    references.back().parent_columns.push_back(pair.parent_column);
  }
  return relations;
}

}  // namespace velmora
