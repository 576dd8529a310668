// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mdb/MdbBuilder.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace velmora {

namespace {

constexpr std::size_t kMaxRowsOnPage = 255;  // a pointer has a byte for the row
constexpr std::size_t kPageHead = 8;         // of a page of a definition
constexpr std::size_t kMapHead = 4;          // of a page of a map
constexpr std::uint32_t kSystemFlag = 0x80000000;
constexpr std::uint32_t kRootId = 0x0F000000;
constexpr std::uint32_t kTablesId = 0x0F000001;
constexpr std::uint32_t kDatabasesId = 0x0F000002;
constexpr std::uint32_t kRelationshipsId = 0x0F000003;
constexpr std::uint32_t kDatabaseId = 0x10000000;
constexpr std::uint16_t kTableObject = 1;
constexpr std::uint16_t kDatabaseObject = 2;
constexpr std::uint16_t kContainerObject = 3;

// --- The tables of the system

std::vector<TMdbColumn> CatalogColumns() {
  using enum EMdbType;
  return PlacedColumns(
      {MdbFixedColumn("Id", LongInt), MdbFixedColumn("ParentId", LongInt), MdbVarColumn("Name", Text, 510),
       MdbFixedColumn("Type", Int), MdbFixedColumn("DateCreate", DateTime), MdbFixedColumn("DateUpdate", DateTime),
       MdbVarColumn("Owner", Binary, 510), MdbFixedColumn("Flags", LongInt), MdbVarColumn("Database", Memo),
       MdbVarColumn("Connect", Memo), MdbVarColumn("ForeignName", Text, 510), MdbVarColumn("RmtInfoShort", Binary, 510),
       MdbVarColumn("RmtInfoLong", Ole), MdbVarColumn("Lv", Ole), MdbVarColumn("LvProp", Ole),
       MdbVarColumn("LvModule", Ole), MdbVarColumn("LvExtra", Ole)});
}

std::vector<TMdbColumn> AccessRightsColumns() {
  using enum EMdbType;
  return PlacedColumns({MdbFixedColumn("ACM", LongInt), MdbFixedColumn("FInheritable", Bool),
                        MdbFixedColumn("ObjectId", LongInt), MdbVarColumn("SID", Binary, 510)});
}

std::vector<TMdbColumn> QueriesColumns() {
  using enum EMdbType;
  return PlacedColumns({MdbFixedColumn("Attribute", Byte), MdbVarColumn("Expression", Memo),
                        MdbFixedColumn("Flag", Int), MdbVarColumn("LvExtra", Ole), MdbVarColumn("Name1", Text, 510),
                        MdbVarColumn("Name2", Text, 510), MdbFixedColumn("ObjectId", LongInt),
                        MdbVarColumn("Order", Binary, 510)});
}

std::vector<TMdbColumn> RelationshipsColumns() {
  using enum EMdbType;
  return PlacedColumns({MdbFixedColumn("ccolumn", LongInt), MdbFixedColumn("grbit", LongInt),
                        MdbFixedColumn("icolumn", LongInt), MdbVarColumn("szColumn", Text, 510),
                        MdbVarColumn("szObject", Text, 510), MdbVarColumn("szReferencedColumn", Text, 510),
                        MdbVarColumn("szReferencedObject", Text, 510), MdbVarColumn("szRelationship", Text, 510)});
}

struct TSystemTable {
  const char* name;
  std::vector<TMdbColumn> (*columns)();
};

// On the pages after that of the global map, in this order; the catalog is the first.
constexpr TSystemTable kSystemTables[] = {{"MSysObjects", CatalogColumns},
                                          {"MSysACEs", AccessRightsColumns},
                                          {"MSysQueries", QueriesColumns},
                                          {"MSysRelationships", RelationshipsColumns}};

}  // namespace

TMdbBuilder::TMdbBuilder(const TMdbLayout& layout, TDateTime created) : layout_(layout), created_(created) {
  AddPage(MdbHeaderPage(layout_, created_));
  // No page of those that the map speaks of is free.
  AddRows(0, {{std::string(5 + layout_.map_size, '\0')}});
  objects_ = {{kTablesId, kRootId, "Tables", kContainerObject, kSystemFlag},
              {kDatabasesId, kRootId, "Databases", kContainerObject, kSystemFlag},
              {kRelationshipsId, kRootId, "Relationships", kContainerObject, kSystemFlag},
              {kDatabaseId, kDatabasesId, "MSysDb", kDatabaseObject, kSystemFlag}};
  for (const TSystemTable& table : kSystemTables)
    objects_.push_back({AddPage({}), kTablesId, table.name, kTableObject, kSystemFlag});
  for (std::uint32_t page = kMdbCatalogPage; const TSystemTable& table : kSystemTables) {
    if (page != kMdbCatalogPage)
      PutTable(page, {.columns = table.columns(), .indexes = {}, .rows = {}, .system = true});
    ++page;
  }
}

std::uint32_t TMdbBuilder::AddPage(std::string bytes) {
  bytes.resize(layout_.page_size);
  pages_.push_back(std::move(bytes));
  return static_cast<std::uint32_t>(pages_.size() - 1);
}

std::vector<std::uint32_t> TMdbBuilder::AddRows(std::uint32_t owner, const std::vector<TMdbRow>& rows) {
  std::vector<std::uint32_t> places;
  for (std::size_t first = 0; first < rows.size();) {
    std::size_t count = 0;
    std::size_t room = layout_.page_size - layout_.row_count_at - 2;
    while (first + count < rows.size() && count < kMaxRowsOnPage && rows[first + count].bytes.size() + 2 <= room)
      room -= rows[first + count++].bytes.size() + 2;
    count = std::max<std::size_t>(count, 1);
    const std::uint32_t page = AddPage(MdbPageOfRows(layout_, owner, rows.data() + first, count));
    for (std::uint32_t row = 0; row < count; ++row) places.push_back(page << 8 | row);
    first += count;
  }
  return places;
}

std::uint32_t TMdbBuilder::AddTable(const std::string& name, const TMdbTable& table,
                                    std::optional<std::string> properties) {
  const std::uint32_t page = AddPage({});
  PutTable(page, table);
  objects_.push_back({page, kTablesId, name, kTableObject, 0, std::move(properties)});
  return page;
}

void TMdbBuilder::SetRelationships(const std::vector<TMdbValues>& rows) {
  TMdbTable table{.columns = RelationshipsColumns(), .indexes = {}, .rows = {}, .system = true};
  for (const TMdbValues& values : rows) table.rows.push_back({layout_.row(table.columns, values)});
  PutTable(kMdbCatalogPage + std::size(kSystemTables) - 1, table);
}

std::string TMdbBuilder::Bytes() && {
  TMdbTable catalog{.columns = CatalogColumns(), .indexes = {}, .rows = {}, .system = true};
  for (const TObject& object : objects_) catalog.rows.push_back({layout_.row(catalog.columns, CatalogValues(object))});
  PutTable(kMdbCatalogPage, catalog);
  std::string bytes;
  for (const std::string& page : pages_) bytes += page;
  return bytes;
}

void TMdbBuilder::PutTable(std::uint32_t page, const TMdbTable& table) {
  const TMdbMaps maps = AddMaps(AddRows(page, table.rows), table);
  PutDefinition(page, MdbDefinition(layout_, table, maps));
}

// A definition that is too long for its page goes on on others.
void TMdbBuilder::PutDefinition(std::uint32_t page, const std::string& definition) {
  const std::size_t room = layout_.page_size - kPageHead;
  for (std::size_t at = 0; at < definition.size(); at += room) {
    const std::string part = definition.substr(at, room);
    const std::uint32_t next = at + room < definition.size() ? AddPage({}) : kMdbNoPage;
    std::string bytes = NewMdbPage(layout_, kMdbPageOfDefinition);
    PutAt(bytes, 2, layout_.wide ? room - part.size() : 0x4356, 2);
    PutAt(bytes, 4, next, 4);
    pages_[page] = bytes.replace(kPageHead, part.size(), part);
    page = next;
  }
}

TMdbMaps TMdbBuilder::AddMaps(const std::vector<std::uint32_t>& rows, const TMdbTable& table) {
  const std::string none(5 + layout_.map_size, '\0');
  std::vector<TMdbRow> maps{{MapOf(rows)}, {none}};
  for (const TMdbColumn& column : table.columns)
    if (IsLong(column)) maps.insert(maps.end(), 2, {none});
  const std::vector<std::uint32_t> places = AddRows(0, maps);
  return {places[0], places[1], {places.begin() + 2, places.end()}};
}

// The pages of these rows: as bits after the number of the first page, or, where they lie too far apart, as pointers
// to pages of bits.
std::string TMdbBuilder::MapOf(const std::vector<std::uint32_t>& rows) {
  const std::uint32_t first = rows.empty() ? 0 : rows.front() >> 8;
  const std::uint32_t last = rows.empty() ? 0 : rows.back() >> 8;
  std::string map(5 + layout_.map_size, '\0');
  if (last - first < 8 * layout_.map_size) {
    PutAt(map, 1, first, 4);
    for (const std::uint32_t row : rows) SetBit(map, 5 * 8 + (row >> 8) - first);
    return map;
  }
  map[0] = 1;
  const std::size_t bits = 8 * (layout_.page_size - kMapHead);
  for (std::size_t part = first / bits; part <= last / bits; ++part) {
    std::string page = NewMdbPage(layout_, kMdbPageOfMap);
    for (const std::uint32_t row : rows)
      if ((row >> 8) / bits == part) SetBit(page, kMapHead * 8 + (row >> 8) % bits);
    PutAt(map, 1 + part * 4, AddPage(std::move(page)), 4);
  }
  return map;
}

TMdbValues TMdbBuilder::CatalogValues(const TObject& object) const {
  const std::string created = DoubleBytes(created_);
  TMdbValues values(CatalogColumns().size());
  values[0] = LittleBytes(object.id, 4);
  values[1] = LittleBytes(object.parent, 4);
  values[2] = layout_.text(object.name);
  values[3] = LittleBytes(object.type, 2);
  values[4] = values[5] = created;
  values[7] = LittleBytes(object.flags, 4);
  values[14] = object.properties;
  return values;
}

}  // namespace velmora
