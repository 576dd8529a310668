// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "mysqlclient/MyConnection.h"
#include "mysqltext/GrantText.h"
#include "util/Lists.h"

namespace velmora {

// Of the login of this connection. Raises what the server raises.
TGrants GrantsOfLogin(TMyConnection& connection);

// The kinds of objects of the database, "view", "trigger", ..., that lists of the server may leave out for a login with
// these grants: servers show what may be touched, and say nothing of the rest.
TStringList HiddenKinds(const TGrants& grants, const std::string& database);

}  // namespace velmora
