// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Plain records that carry one object of a structure between the store and an engine. They own their texts. A number
// that is null in the store is 0 here.

#include <cstdint>
#include <string>

#include "core/NeutralTypes.h"

namespace velmora {

struct TMetaColumn {
  std::string table;
  std::string name;
  TNeutralType datatype = ntI1;
  std::string description;  // the bare type name in the dialect of the owning engine
  std::int64_t size = 0;
  std::int32_t precision = 0;
  bool notnull = false;
  std::string default_;  // as SQL text with its quotes; empty when there is none
  bool autoinc = false;
};

struct TMetaKey {
  std::string table;
  std::string name;
  bool primary = false;
  bool unique = false;
  bool fulltext = false;
  std::string columns;  // joined by ";"
};

// Values of constraint_type.
inline constexpr std::int32_t kPrimaryConstraint = 0;
inline constexpr std::int32_t kUniqueConstraint = 1;
inline constexpr std::int32_t kForeignKeyConstraint = 2;
inline constexpr std::int32_t kCheckConstraint = 3;
inline constexpr std::int32_t kDefaultConstraint = 4;

struct TMetaConstraint {
  std::string table;
  std::int32_t constraint_type = kPrimaryConstraint;
  std::string name;
  std::string foreign_db;
  std::string foreign_table;
  std::string delete_rule;
  std::string update_rule;
  std::string local_columns;    // joined by ";"
  std::string foreign_columns;  // joined by ";"
};

// The name under which the store holds the primary key of a MySQL table.
inline constexpr char kPrimaryKeyName[] = "primary key";

}  // namespace velmora
