// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The connection string of the ODBC driver for SQL Server, made from the properties of the OLE DB provider.

#include <optional>
#include <string>
#include <string_view>

#include "formats/port/InitString.h"

namespace velmora {

// From "Data Source", "Initial Catalog", "User ID", "Password" and "Integrated Security". A source of none, "." and
// "(local)" are this machine; "host,port" names a port, and then an instance after "\" does not count; "host\instance"
// is left to the driver, which asks the host. The text is in ISO 8859-1, as the driver takes it. Raises "\"%s\" is no
// port of a server", and for what the driver cannot take: letters beyond that character set, and "};".
std::string FreeTdsString(const TInitString& properties);

bool IsWindowsLogin(const TInitString& properties);  // by the account that runs this program

// What the driver says of a login is in the same character set.
std::string FromLatin1(std::string_view text);

// "Connect Timeout" in seconds; nothing where the properties have none. Raises for what is no such number.
std::optional<int> LoginTimeout(const TInitString& properties);

}  // namespace velmora
