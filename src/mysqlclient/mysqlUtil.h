// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Short queries on a MySQL connection, each on a query of its own.

#include <cstdint>
#include <string>
#include <vector>

#include "mysqlclient/MyConnection.h"
#include "util/Lists.h"
#include "util/Variant.h"

namespace velmora {

// `row` gets the fields of the first row, one value per column; nulls when there is no row. Gives the record count.
std::int64_t MySqlQueryRow(const std::string& sql, TMyConnection& connection, std::vector<TVariant>& row);

// `list` gets the first column of each row. `objects`, if any, gets the second column as whole numbers, one per row,
// where the result has a second column, and is empty otherwise. Both stay as they are when the query fails.
void MySqlQueryList(const std::string& sql, TStringList& list, TMyConnection& connection,
                    std::vector<std::int64_t>* objects = nullptr);

}  // namespace velmora
