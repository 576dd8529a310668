// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The types of ODBC: what they are in a schema rowset, and how values of them are asked for and read.

#include <cstdint>
#include <string>

#include "core/Dataset.h"
#include "formats/port/Provider.h"

namespace velmora {

// What a value is asked for as. Numbers and dates are asked for as text, which keeps decimals exact, and shows as it is
// what a driver has stored against its own types.
enum class EOdbcForm { Text, Raw, Bit };

struct TOdbcType {
  int number;             // as the drivers give it
  std::uint16_t db_type;  // a TDBType; 0: none in schema rowsets
  std::uint16_t db_type_unsigned;
  std::uint32_t flags;  // of COLUMN_FLAGS
  EFieldKind kind;
  EFieldKind kind_unsigned;
  EOdbcForm form;
  TVariant (*read)(std::string text);
};

const TOdbcType* FindOdbcType(int number);  // null for one that is not known

// Whether it is one of the four types that may be unsigned; texts and bytes have a length instead of a precision.
bool IsOdbcInteger(const TOdbcType& type);
bool IsOdbcSized(const TOdbcType& type);
bool IsOdbcDecimal(const TOdbcType& type);

// DATA_TYPE for a number that has none: the number itself, so that the engine names it; where that would be taken for a
// type, 0.
std::uint16_t UnknownDbType(int number);

}  // namespace velmora
