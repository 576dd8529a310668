// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a Jet database file tells of the columns and indexes of a table.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

inline constexpr std::uint32_t kMdbNoPage = 0;
inline constexpr std::uint32_t kMdbCatalogPage = 2;  // the first of the definition of MSysObjects
inline constexpr std::uint16_t kMdbNoColumn = 0xFFFF;
inline constexpr std::size_t kMdbMaxParts = 10;  // of an index; a definition has room for so many

enum class EMdbType : std::uint8_t {
  Bool = 1,
  Byte = 2,
  Int = 3,
  LongInt = 4,
  Money = 5,
  Float = 6,
  Double = 7,
  DateTime = 8,
  Binary = 9,
  Text = 10,
  Ole = 11,
  Memo = 12,
  RepId = 15,
  Numeric = 16,
  Complex = 18,  // attachments, or several values: the number under which they stand in another table
  BigInt = 19,
  LongDateTime = 20
};

// Flags of columns.
inline constexpr std::uint8_t kMdbFixed = 0x01;
inline constexpr std::uint8_t kMdbNullable = 0x02;
inline constexpr std::uint8_t kMdbAutoNumber = 0x04;
inline constexpr std::uint8_t kMdbAutoGuid = 0x40;
inline constexpr std::uint8_t kMdbComputed = 0xC0;  // of the second byte of flags

struct TMdbColumn {
  std::string name;
  EMdbType type = EMdbType::LongInt;  // or another number
  std::uint16_t size = 0;             // in bytes; 0 for yes/no and long values
  std::uint8_t flags = kMdbNullable;
  std::uint8_t precision = 0;
  std::uint8_t scale = 0;
  std::uint16_t number = 0;  // from 0; a deleted column keeps its own
  std::uint16_t fixed_offset = 0;
  std::uint16_t var_index = 0;
  bool computed = false;  // from an expression

  bool Has(std::uint8_t flag) const { return (flags & flag) != 0; }
};

// Flags, and kinds, of indexes.
inline constexpr std::uint8_t kMdbUnique = 0x01;
inline constexpr std::uint8_t kMdbNotNull = 0x08;  // of its columns
inline constexpr std::uint8_t kMdbPrimaryKey = 1;
inline constexpr std::uint8_t kMdbRelation = 2;  // one end of a relation between tables

struct TMdbIndexPart {
  std::uint16_t column = 0;  // its number
  bool descending = false;
};

struct TMdbIndex {
  std::string name;
  std::vector<TMdbIndexPart> parts;
  std::uint8_t flags = 0;
  std::uint8_t kind = 0;
};

// Flags of the entry that a page has for a row.
inline constexpr std::uint16_t kMdbRowMoved = 0x4000;    // its bytes stand in another entry; or it is deleted
inline constexpr std::uint16_t kMdbRowOutside = 0x8000;  // the bytes of a moved row; with the flag above: deleted

}  // namespace velmora
