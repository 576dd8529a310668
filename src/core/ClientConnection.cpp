// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ClientConnection.h"

namespace velmora {

void TClientConnection::SetConnected(bool connected) {
  if (connected == GetConnected()) return;
  if (!connected) {
    DoDisconnect();
    return;
  }
  if (BeforeConnect) BeforeConnect();
  Login();
}

}  // namespace velmora
