// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "mysqlclient/MyConnection.h"

namespace velmora {

// A connection to a server with these options, of the backend that they choose: our own client where `Direct` is on,
// otherwise the client library. Unconnected.
std::unique_ptr<TMyConnection> MakeMyConnection(const TMyOptions& options);

}  // namespace velmora
