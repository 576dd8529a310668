// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mdb/MdbDefinition.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace velmora {

namespace {

// Fields one after the other; those of Jet 4 alone are left out for other versions.
class TFields {
 public:
  explicit TFields(const TMdbLayout& layout) : layout_(layout) {}

  void Put(std::uint64_t value, std::size_t width) { bytes_ += LittleBytes(value, width); }
  void PutWide(std::uint64_t value, std::size_t width) {
    if (layout_.wide) Put(value, width);
  }
  void PutName(const std::string& name) {
    const std::string text = layout_.text(name);
    Put(text.size(), layout_.name_length);
    bytes_ += text;
  }
  std::string Take() { return std::move(bytes_); }

 private:
  const TMdbLayout& layout_;
  std::string bytes_;
};

// One more than the largest of those numbers; columns that were deleted leave gaps.
template <class Number, class Wanted>
std::uint16_t CountOf(const std::vector<TMdbColumn>& columns, Number number, Wanted wanted) {
  std::uint16_t count = 0;
  for (const TMdbColumn& column : columns)
    if (wanted(column)) count = std::max(count, static_cast<std::uint16_t>(column.*number + 1));
  return count;
}

std::uint16_t ColumnCount(const std::vector<TMdbColumn>& columns) {
  return CountOf(columns, &TMdbColumn::number, [](const TMdbColumn&) { return true; });
}

std::uint16_t VarColumnCount(const std::vector<TMdbColumn>& columns) {
  return CountOf(columns, &TMdbColumn::var_index, [](const TMdbColumn& column) { return !column.Has(kMdbFixed); });
}

void PutColumn(TFields& fields, const TMdbLayout& layout, const TMdbColumn& column) {
  const bool text = column.type == EMdbType::Text || column.type == EMdbType::Memo;
  fields.Put(static_cast<std::uint8_t>(column.type), 1);
  fields.PutWide(0, 4);
  fields.Put(column.number, 2);
  fields.Put(column.var_index, 2);
  fields.Put(column.number, 2);
  if (!layout.wide) {
    fields.Put(text ? kMdbGeneralOrder : 0, 2);
    fields.Put(text ? kMdbCodePage : 0, 4);
  } else {
    fields.Put(text ? kMdbGeneralOrder : static_cast<std::uint64_t>(column.precision | column.scale << 8), 4);
  }
  fields.Put(column.flags, 1);
  fields.PutWide(column.computed ? kMdbComputed : 0, 5);
  fields.Put(column.fixed_offset, 2);
  fields.Put(column.size, 2);
}

// In a block of Jet 4 there are four bytes between the page of the root and the flags.
void PutIndexColumns(TFields& fields, const TMdbIndex& index) {
  fields.PutWide(0, 4);
  for (std::size_t i = 0; i < kMdbMaxParts; ++i) {
    const bool used = i < index.parts.size();
    fields.Put(used ? index.parts[i].column : kMdbNoColumn, 2);
    fields.Put(used && !index.parts[i].descending ? 1 : 0, 1);
  }
  fields.Put(kMdbNoPage, 4);
  fields.Put(kMdbNoPage, 4);
  fields.PutWide(0, 4);
  fields.Put(index.flags, 1);
  fields.PutWide(0, 5);
}

void PutIndexHead(TFields& fields, const TMdbIndex& index, std::size_t number) {
  fields.PutWide(0, 4);
  fields.Put(number, 4);
  fields.Put(number, 4);
  fields.Put(0, 1);
  fields.Put(0xFFFFFFFF, 4);  // no index of another table
  fields.Put(kMdbNoPage, 4);
  fields.Put(0, 2);
  fields.Put(index.kind, 1);
  fields.PutWide(0, 4);
}

void PutCounts(TFields& fields, const TMdbTable& table) {
  fields.Put(table.system ? 0x53 : 0x4E, 1);
  fields.Put(ColumnCount(table.columns), 2);
  fields.Put(VarColumnCount(table.columns), 2);
  fields.Put(table.columns.size(), 2);
  fields.Put(table.indexes.size(), 4);
  fields.Put(table.indexes.size(), 4);
}

std::size_t RowCount(const std::vector<TMdbRow>& rows) {
  return static_cast<std::size_t>(
      std::ranges::count_if(rows, [](const TMdbRow& row) { return (row.flags & kMdbRowMoved) == 0; }));
}

// What stands after the length of the definition, up to the pointers to the maps.
void PutTableHead(TFields& fields, const TMdbTable& table) {
  fields.PutWide(0, 4);
  fields.Put(RowCount(table.rows), 4);
  fields.Put(table.last_autonumber, 4);
  fields.PutWide(1, 4);  // autonumbers count up
  fields.PutWide(0, 8);
  fields.PutWide(0, 4);
  PutCounts(fields, table);
}

void PutIndexes(TFields& fields, const std::vector<TMdbIndex>& indexes) {
  for (const TMdbIndex& index : indexes) PutIndexColumns(fields, index);
  for (std::size_t i = 0; i < indexes.size(); ++i) PutIndexHead(fields, indexes[i], i);
  for (const TMdbIndex& index : indexes) fields.PutName(index.name);
}

}  // namespace

bool IsLong(const TMdbColumn& column) { return column.type == EMdbType::Memo || column.type == EMdbType::Ole; }

std::string MdbDefinition(const TMdbLayout& layout, const TMdbTable& table, const TMdbMaps& maps) {
  TFields fields(layout);
  PutTableHead(fields, table);
  fields.Put(maps.used, 4);
  fields.Put(maps.free, 4);
  for (std::size_t i = 0; i < table.indexes.size(); ++i) {
    fields.Put(0, 4);
    fields.Put(RowCount(table.rows), 4);
    fields.PutWide(0, 4);
  }
  for (const TMdbColumn& column : table.columns) PutColumn(fields, layout, column);
  for (const TMdbColumn& column : table.columns) fields.PutName(column.name);
  PutIndexes(fields, table.indexes);
  auto map = maps.of_long_columns.begin();
  for (const TMdbColumn& column : table.columns) {
    if (!IsLong(column)) continue;
    fields.Put(column.number, 2);
    fields.Put(*map++, 4);
    fields.Put(*map++, 4);
  }
  fields.Put(kMdbNoColumn, 2);
  const std::string definition = fields.Take();
  return LittleBytes(definition.size() + 4, 4) + definition;
}

}  // namespace velmora
