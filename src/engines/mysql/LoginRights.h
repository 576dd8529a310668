// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "mysqlclient/MyConnection.h"
#include "util/Lists.h"

namespace velmora {

// The kinds of objects of the database, "view", "trigger", ..., that lists of the server may leave out for the login of
// this connection: servers show what may be touched, and say nothing of the rest.
TStringList HiddenKinds(TMyConnection& connection, const std::string& database);

}  // namespace velmora
