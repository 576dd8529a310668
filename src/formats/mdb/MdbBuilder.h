// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Jet database files, put together table by table.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/mdb/MdbDefinition.h"
#include "formats/mdb/MdbPages.h"
#include "util/Dates.h"

namespace velmora {

// A database under construction. The system's own tables are there from the start, on the pages where they belong.
class TMdbBuilder {
 public:
  TMdbBuilder(const TMdbLayout& layout, TDateTime created);

  std::uint32_t AddPage(std::string bytes);  // its number; padded with zeros
  // Pages of these rows, as many as it takes. `owner` is the first page of a table's definition, or another mark.
  // Gives the pointers to the rows: page * 256 + row.
  std::vector<std::uint32_t> AddRows(std::uint32_t owner, const std::vector<TMdbRow>& rows);
  // `properties` is the stored form of the column LvProp. Gives the first page of the definition.
  std::uint32_t AddTable(const std::string& name, const TMdbTable& table, std::optional<std::string> properties = {});
  // The rows of MSysRelationships, by its columns: ccolumn, grbit, icolumn, szColumn, szObject, szReferencedColumn,
  // szReferencedObject, szRelationship.
  void SetRelationships(const std::vector<TMdbValues>& rows);
  std::string Bytes() &&;  // the whole file

 private:
  struct TObject {
    std::uint32_t id = 0;
    std::uint32_t parent = 0;
    std::string name;
    std::uint16_t type = 0;
    std::uint32_t flags = 0;
    std::optional<std::string> properties = {};
  };
  void PutTable(std::uint32_t page, const TMdbTable& table);
  TMdbMaps AddMaps(const std::vector<std::uint32_t>& rows, const TMdbTable& table);
  std::string MapOf(const std::vector<std::uint32_t>& rows);
  void PutDefinition(std::uint32_t page, const std::string& definition);
  TMdbValues CatalogValues(const TObject& object) const;

  const TMdbLayout& layout_;
  TDateTime created_;
  std::vector<std::string> pages_;
  std::vector<TObject> objects_;
};

}  // namespace velmora
