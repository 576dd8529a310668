// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "core/DBConn.h"

namespace velmora {

// What the clients of servers and files share: how a connection is opened and closed.
class TClientConnection : public TConnectionObject {
 public:
  std::function<void()> BeforeConnect;  // called before each attempt to connect; may set the parameters

  // Nothing happens when the connection already is as wanted. After a failure to connect it is not connected.
  void SetConnected(bool connected) override;

 protected:
  virtual void DoConnect() = 0;
  virtual void DoDisconnect() = 0;

 private:
  virtual void Login() { DoConnect(); }  // may take more than one attempt
};

}  // namespace velmora
