// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "mysqlclient/ServerConnection.h"

namespace velmora {

// A MySQL server by way of our own client, old servers and new ones.
class TNativeConnection final : public TServerConnection {
 private:
  std::unique_ptr<TMyWire> NewWire() const override;
  std::unique_ptr<TServerConnection> NewOfThisKind() const override { return std::make_unique<TNativeConnection>(); }
};

}  // namespace velmora
