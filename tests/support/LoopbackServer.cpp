// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/LoopbackServer.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace velmora::testing {

TLoopbackServer::TLoopbackServer(std::function<void(int connection)> serve, bool ipv6) {
  sockaddr_in6 wide{};
  wide.sin6_family = AF_INET6;
  wide.sin6_addr = in6addr_loopback;
  sockaddr_in narrow{};
  narrow.sin_family = AF_INET;
  narrow.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* address = ipv6 ? reinterpret_cast<sockaddr*>(&wide) : reinterpret_cast<sockaddr*>(&narrow);
  socklen_t size = ipv6 ? sizeof(wide) : sizeof(narrow);
  listener_ = socket(ipv6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(listener_, address, size) != 0 || listen(listener_, 1) != 0 || getsockname(listener_, address, &size) != 0)
    return;
  port_ = ntohs(ipv6 ? wide.sin6_port : narrow.sin_port);
  thread_ = std::thread([this, serve = std::move(serve)] {
    const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    serve(connection);
    close(connection);
  });
}

TLoopbackServer::~TLoopbackServer() {
  if (thread_.joinable()) thread_.join();
  close(listener_);
}

void SendAll(int connection, const std::string& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t sent = send(connection, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
    if (sent <= 0) return;
    done += static_cast<std::size_t>(sent);
  }
}

std::string ReceiveAll(int connection, std::size_t count) {
  std::string bytes;
  char piece[4096];
  while (bytes.size() < count) {
    const ssize_t received = recv(connection, piece, std::min(sizeof(piece), count - bytes.size()), 0);
    if (received <= 0) break;
    bytes.append(piece, static_cast<std::size_t>(received));
  }
  return bytes;
}

std::string ReceivePacket(int connection) {
  const std::string head = ReceiveAll(connection, 4);
  std::size_t size = 0;
  for (std::size_t i = 3; head.size() == 4 && i-- > 0;) size = size << 8 | static_cast<unsigned char>(head[i]);
  return ReceiveAll(connection, size);
}

}  // namespace velmora::testing
