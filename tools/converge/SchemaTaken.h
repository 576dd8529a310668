// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

#include "converge/SchemaModel.h"
#include "support/LiveDatabase.h"

namespace velmora::testing {

struct TTakenParts {
  std::size_t parts = 0;    // columns, keys, checks, foreign keys, options, ...
  std::size_t dropped = 0;  // of them
};

// Makes the schema's tables in an empty database. What the server refuses goes from the schema, and nothing more: it
// has to make the table and to open it again, and to take foreign keys from an "alter table".
TTakenParts MakeWhatIsTaken(TLiveDatabase& database, TSchemaModel& schema);

}  // namespace velmora::testing
