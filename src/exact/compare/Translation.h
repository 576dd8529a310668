// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A table as a server of another product or release would have it.

#include <string>
#include <string_view>

#include "exact/compare/ServerForm.h"
#include "mysqltext/TableText.h"

namespace velmora {

// A creation text without the marks of versions, which the other product passes over with what is between them, and
// without comments.
std::string WithoutMarks(std::string_view text);

// Says in words of `to` what a table of a server `from` says, where there is an exact equivalent. The rest stays as it
// is. JSON of MariaDB is a long text with a check, that of MySQL a type of its own; each becomes the other.
void TranslateTable(TTableText& table, const TServerTraits& from, const TServerTraits& to);

}  // namespace velmora
