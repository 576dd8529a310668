// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <thread>

namespace velmora::testing {

// Listens on a free port of the loopback interface and runs `serve` in a thread with the first connection, which is
// closed behind it.
class TLoopbackServer {
 public:
  explicit TLoopbackServer(std::function<void(int connection)> serve, bool ipv6 = false);
  ~TLoopbackServer();  // waits for `serve`; a connection must have come
  TLoopbackServer(const TLoopbackServer&) = delete;
  TLoopbackServer& operator=(const TLoopbackServer&) = delete;

  int Port() const { return port_; }  // 0: this machine has no such interface, and no connection is waited for

 private:
  int listener_ = -1;
  int port_ = 0;
  std::thread thread_;
};

// Sends all of it; reads until `count` bytes have come or the other end closes.
void SendAll(int connection, const std::string& bytes);
std::string ReceiveAll(int connection, std::size_t count);
std::string ReceivePacket(int connection);  // the payload of a packet of MySQL's; empty when the other end closes

}  // namespace velmora::testing
