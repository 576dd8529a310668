// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace velmora::testing {

// The file of an installed ODBC driver, as "libsqlite3odbc.so". A fault is a std::runtime_error.
std::string OdbcDriverFile(std::string_view name);

// Makes a data source known to this program and its children. It leads the driver manager away from the system's files,
// to an odbc.ini of its own and an odbcinst.ini without drivers. `settings` are lines like "Database=/tmp/shop.db". The
// manager keeps in mind what it once read of a name, so a name has the same settings throughout a program.
void AddOdbcSource(const std::string& name, const std::string& driver_file, const std::string& settings = {});

}  // namespace velmora::testing
