// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Jet database files, put together page by page, by the published notes on the format that the mdbtools project keeps
// (its text HACKING). What is not known there is left at 0.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/mdb/MdbFormat.h"
#include "util/Dates.h"

namespace velmora {

// Of the size that the type has.
TMdbColumn MdbFixedColumn(std::string name, EMdbType type, std::uint8_t flags = kMdbNullable);
TMdbColumn MdbVarColumn(std::string name, EMdbType type, std::uint16_t size = 0);
// Numbers them, and gives them their places in a row.
std::vector<TMdbColumn> PlacedColumns(std::vector<TMdbColumn> columns);

// A row as it is stored, with the flags that its entry in the table of rows carries.
struct TMdbRow {
  std::string bytes;
  std::uint16_t flags = 0;
};

// The stored bytes of a row's columns, one per number; for a yes/no column any value means yes.
using TMdbValues = std::vector<std::optional<std::string>>;

// What the versions of the format differ in.
struct TMdbLayout {
  std::string_view name;
  std::uint8_t version;  // byte 0x14 of the file
  bool wide;             // with the fields that Jet 4 has added
  std::size_t page_size;
  std::size_t secret_size;   // enciphered bytes of the first page
  std::size_t row_count_at;  // on a page of rows
  std::size_t map_size;      // bytes of a map of pages that stands in a row
  std::size_t name_length;   // bytes of the length of a name
  std::string (*text)(std::string_view utf8);
  std::string (*row)(const std::vector<TMdbColumn>& columns, const TMdbValues& values);
};
extern const TMdbLayout kMdbJet4;

// Kinds of pages.
inline constexpr std::uint8_t kMdbPageOfRows = 1;
inline constexpr std::uint8_t kMdbPageOfDefinition = 2;
inline constexpr std::uint8_t kMdbPageOfMap = 5;

inline constexpr std::uint16_t kMdbGeneralOrder = 0x409;  // how texts are sorted
inline constexpr std::uint16_t kMdbCodePage = 1252;       // of texts in Jet 3

std::string LittleBytes(std::uint64_t value, std::size_t width);
std::string DoubleBytes(double value);
void PutAt(std::string& bytes, std::size_t at, std::uint64_t value, std::size_t width);
void SetBit(std::string& bytes, std::size_t bit);  // the lowest of the first byte is 0
void ApplyRC4(std::string_view key, std::string& bytes, std::size_t at, std::size_t count);

std::string NewMdbPage(const TMdbLayout& layout, std::uint8_t kind);
// `owner` is the first page of a table's definition, or another mark. The rows must fit.
std::string MdbPageOfRows(const TMdbLayout& layout, std::uint32_t owner, const TMdbRow* rows, std::size_t count);
std::string MdbHeaderPage(const TMdbLayout& layout, TDateTime created);  // the first one

}  // namespace velmora
