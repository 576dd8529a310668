// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "mysqlnet/MySqlVioSocket.h"

namespace velmora {

// A server of this machine by its socket in the file system, which is what this platform has for named pipes. Host and
// port are those of the connection and have no part in it.
class TMySqlVioPipe final : public TMySqlVioSocket {
 public:
  // `pipe` is the socket's path; empty means the first of the usual places that has one.
  TMySqlVioPipe(std::string host, std::string pipe, int port);

  static std::string UsualPath();  // empty when no usual place has a socket

  void Connect() override;  // raises SocketException 2002
  bool IsPrivate() const override { return true; }
  const std::string& Host() const { return host_; }
  int Port() const { return port_; }

 private:
  std::string host_;
  std::string pipe_;
  int port_;
};

}  // namespace velmora
