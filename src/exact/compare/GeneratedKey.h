// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The primary key that MySQL makes by itself of an invisible column, for tables without one, where it is told to
// (sql_generate_invisible_primary_key).

#include <string_view>

#include "mysqltext/TableText.h"

namespace velmora {

inline constexpr std::string_view kGeneratedColumn = "my_row_id";

bool HasGeneratedKey(const TTableText& table);

bool HasCounter(const TTableText& table);  // a column with auto_increment

// Of two tables that one whose generated key is no difference: the other one has no primary key, and nothing with which
// the generated one could not be there. Null for none.
const TTableText* WithGeneratedKey(const TTableText& reference, const TTableText& target);

// Whether the element of such a table is its generated key, or the column of that.
bool IsOfGeneratedKey(const TElement& element);

bool HasPrimaryKey(const TTableText& table);
// A unique key that servers may take for the primary one where there is none.
bool IsKeyWithoutNull(const TElement& key, const TTableText& table);
bool HasUniqueKeyWithoutNull(const TTableText& table);

}  // namespace velmora
