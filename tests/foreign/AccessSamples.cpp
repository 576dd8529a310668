// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/AccessSamples.h"

#include <algorithm>

#include "formats/mdb/MdbBuilder.h"
#include "formats/mdb/MdbText.h"

namespace velmora::testing {
namespace {

std::string Counted(const std::string& bytes) { return LittleBytes(bytes.size(), 2) + bytes; }

// With the size in front, which counts itself.
std::string Block(std::size_t width, const std::string& bytes) {
  return LittleBytes(bytes.size() + width, width) + bytes;
}

std::string Value(std::size_t name, const std::string& value) {
  const bool truth = value == "yes" || value == "no";
  const std::string bytes = truth ? std::string(1, value == "yes" ? '\xFF' : '\0') : Utf16OfText(value);
  return Block(2, std::string(1, '\0') + (truth ? '\x01' : '\x0A') + LittleBytes(name, 2) + Counted(bytes));
}

std::string Stored(const std::map<std::string, TAccessProperties>& properties) {
  TStringList names;
  for (const auto& [owner, values] : properties)
    for (const auto& [name, value] : values)
      if (std::ranges::find(names, name) == names.end()) names.push_back(name);
  std::string chunk = LittleBytes(0x80, 2);
  for (const std::string& name : names) chunk += Counted(Utf16OfText(name));
  std::string bytes = std::string("MR2\0", 4) + Block(4, chunk);
  for (const auto& [owner, values] : properties) {
    chunk = LittleBytes(owner.empty() ? 0 : 1, 2) + Block(4, Counted(Utf16OfText(owner)));
    for (const auto& [name, value] : values)
      chunk += Value(static_cast<std::size_t>(std::ranges::find(names, name) - names.begin()), value);
    bytes += Block(4, chunk);
  }
  return LittleBytes(bytes.size() | 0x80000000U, 4) + std::string(8, '\0') + bytes;
}

}  // namespace

std::string AccessFile(const std::vector<TAccessTable>& tables, const std::vector<TAccessRelation>& relations) {
  TMdbBuilder builder(kMdbJet4, EncodeDate(2001, 2, 3));
  for (const TAccessTable& table : tables) {
    std::optional<std::string> properties;
    if (!table.properties.empty()) properties = Stored(table.properties);
    builder.AddTable(table.name, {.columns = PlacedColumns(table.columns), .indexes = table.indexes, .rows = {}},
                     properties);
  }
  std::vector<TMdbValues> rows;
  for (const TAccessRelation& relation : relations)
    for (std::size_t i = 0; i < relation.columns.size(); ++i)
      rows.push_back({LittleBytes(relation.columns.size(), 4), LittleBytes(relation.bits, 4), LittleBytes(i, 4),
                      Utf16OfText(relation.columns[i]), Utf16OfText(relation.child),
                      Utf16OfText(relation.parent_columns[i]), Utf16OfText(relation.parent),
                      Utf16OfText(relation.name)});
  builder.SetRelationships(rows);
  return std::move(builder).Bytes();
}

}  // namespace velmora::testing
