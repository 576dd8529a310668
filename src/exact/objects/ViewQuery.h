// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the query of a view says: servers print it in spellings of their own.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "exact/objects/QueryNames.h"

namespace velmora {

// In a spelling of its own: white space, comments, letter case of keywords, how names are quoted, redundant brackets,
// the form of joins, names of columns where there is but one table, and what ExpressionForm knows do not count. Two
// queries that may say different things never have the same. `columns` are those of the view, if it names them. The own
// database is out of it already. Raises where the text cannot be taken apart.
std::string QueryMeaning(std::string_view query, const std::vector<std::string>& columns = {});

// What the own database has.
struct TQuerySide {
  std::function<TListedColumns(const std::string& table)> columns_of{};  // of tables and views
  std::function<bool(const std::string& name)> has_function{};           // a stored one, in lower case
};

// The same with every name led back to the table whose column it is, "*" to the columns, "using" and "natural" to what
// they join by. Raises where any of it is not certain: then nobody may say that it is the same as another.
std::string ResolvedMeaning(std::string_view query, const std::vector<std::string>& columns, const TQuerySide& side);

// Names of the columns that it gives; none where they are not known.
std::vector<std::string> QueryColumns(std::string_view query, const TQuerySide& side = {});

}  // namespace velmora
