// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "engines/server/IBOClient.h"

namespace velmora {

// The client over the Firebird client library. Without a SERVER the library opens the file itself where its embedded
// engine is installed, and asks the server of this machine otherwise. Texts are UTF-8 throughout.
//
// Once an error says that the connection is lost, this is not connected and in no transaction.
std::unique_ptr<TIBODatabase> NewFirebirdDatabase();

}  // namespace velmora
