// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Where a view can't be opened, since its definer's account or a table is gone, MariaDB prints '' in the place of each
// column number: "order by 2" becomes "order by ''", which orders nothing. What information_schema keeps of the view
// still has the numbers, with the database in front of each table.

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

// Whether `text`, from "show create view", may lack numbers.
bool MayLackOrdinals(std::string_view text);

// `text` with the numbers of `query`, the view's view_definition; none where they are not the same view. Raises the
// faults of Tokens.
std::optional<std::string> WithOrdinals(std::string_view text, std::string_view query);

}  // namespace velmora
