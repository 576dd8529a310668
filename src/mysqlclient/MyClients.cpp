// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/MyClients.h"

#include "mysqlclient/ClientLibrary.h"
#include "mysqlclient/ClientNative.h"

namespace velmora {

std::unique_ptr<TMyConnection> MakeMyConnection(const TMyOptions& options) {
  std::unique_ptr<TMyConnection> connection;
  if (options.Direct)
    connection = std::make_unique<TNativeConnection>();
  else
    connection = std::make_unique<TLibraryConnection>();
  connection->Options = options;
  return connection;
}

}  // namespace velmora
