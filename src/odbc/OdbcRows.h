// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Rows of an ODBC statement, read whole.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/port/Provider.h"
#include "odbc/OdbcHandles.h"
#include "odbc/OdbcStatements.h"

namespace velmora {

// What the driver tells about a column of a result.
struct TOdbcColumn {
  std::string name;
  int type = 0;
  std::int64_t size = 0;
  bool is_unsigned = false;  // right for whole numbers only
  bool is_autoincrement = false;
};

std::vector<TOdbcColumn> OdbcColumnsOf(const TOdbcStatement& statement);

// Fields and rows of an executed statement, the first `limit` of them. Values longer than 256 MB, and lengths that
// cannot be, raise an error that names the column. A type that is not known raises its error only when rows are asked
// for, since the fields alone may be all that is wanted.
TOLEDBRowset FetchOdbcRowset(const TOdbcStatement& statement, std::int64_t limit = kNoLimit);

// Rows of a catalog call: all values as texts.
using TOdbcTexts = std::vector<std::optional<std::string>>;
std::vector<TOdbcTexts> FetchOdbcTexts(const TOdbcStatement& statement);

}  // namespace velmora
