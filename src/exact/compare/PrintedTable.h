// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Tables as servers print them, where some print what says something else than the table has.

#include <string>

#include "mysqltext/TableText.h"

namespace velmora {

// Takes a server's creation text apart. Raises for one in which the server has mistaken itself:
// - MariaDB 10.5 prints defaults that are expressions of columns in ucs2 or utf16 as the bytes of that set
// - MariaDB 10.5 and 11.8 print names in foreign keys without doubling their back quotes
// Where MariaDB prints a shape in a key without a prefix, it has one of four bytes.
// Without `marks` what stands in comments for servers of a version is read as if it stood outside of them.
TTableText ReadPrintedTable(const std::string& text, bool marks = true);

}  // namespace velmora
