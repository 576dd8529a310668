// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The statements that engines send to files, and what they give. There are five forms:
//   select * from [t]
//   select count(*) from [t]
//   select top N * from [t]                     with or without: order by 1
//   select top N * from [t] where K not in (select top M K from [t])
//   select * from [t] where recno() between A and B

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/port/FileReader.h"

namespace velmora {

struct TFileStatement {
  std::string table;
  bool count = false;               // the number of rows, not the rows
  std::optional<std::int64_t> top;  // so many rows at most
  bool by_first_column = false;     // ordered by it, before `top` counts
  std::string key;                  // without the rows whose key stands in the first `skip` rows; empty: with all
  std::int64_t skip = 0;
  std::optional<std::int64_t> from;  // record numbers, both included
  std::int64_t to = 0;
};

// Raises an error that shows the statement for what is none of the forms. A name may hold brackets.
TFileStatement ParseFileStatement(std::string_view sql);

// The rows that `statement` takes of a table's rows. `fields` are the table's. Raises for a key that is no field.
TRowsOfValues SelectRows(const TFileStatement& statement, const std::vector<TFieldDef>& fields, TFileRows rows);

// How many rows of the table must be read for it; kAllRows when that cannot be told.
std::int64_t RowsNeeded(const TFileStatement& statement);

}  // namespace velmora
