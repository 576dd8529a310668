// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "mysqlclient/ServerConnection.h"

namespace velmora {

// A MySQL server by way of the MariaDB client library.
class TLibraryConnection final : public TServerConnection {
 private:
  std::unique_ptr<TMyWire> NewWire() const override;
  std::unique_ptr<TServerConnection> NewOfThisKind() const override { return std::make_unique<TLibraryConnection>(); }
};

}  // namespace velmora
