// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "mysqlnet/MySqlVioSocket.h"

namespace velmora {

// TCP, over IPv4 and IPv6: each address of the host is tried in the system's order until one answers.
class TMySqlVioTcp final : public TMySqlVioSocket {
 public:
  // An empty host is "localhost", port 0 is 3306.
  TMySqlVioTcp(std::string host, int port);

  void Connect() override;  // raises SocketException 2003 or 2005

 private:
  std::string host_;
  int port_;
};

}  // namespace velmora
