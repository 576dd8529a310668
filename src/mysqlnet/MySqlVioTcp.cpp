// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlVioTcp.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <memory>
#include <utility>

#include "mysqlnet/MySqlErrors.h"
#include "util/Format.h"
#include "util/MySqlFacts.h"

namespace velmora {

namespace {

struct TFreeAddresses {
  void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using TAddresses = std::unique_ptr<addrinfo, TFreeAddresses>;

TAddresses AddressesOf(const std::string& host, int port) {
  addrinfo wanted{};
  wanted.ai_family = AF_UNSPEC;
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(host.c_str(), Format("%d", port).c_str(), &wanted, &found);
  if (error != 0) throw TransportError(kUnknownHost, host, error);
  return TAddresses(found);
}

// Commands are sent whole, so waiting for more to send only costs time.
void SetOptions(int socket) {
  const int on = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof(on));
}

}  // namespace

TMySqlVioTcp::TMySqlVioTcp(std::string host, int port)
    : host_(host.empty() ? kMySqlHost : std::move(host)), port_(port == 0 ? kMySqlPort : port) {}

void TMySqlVioTcp::Connect() {
  const TDeadline deadline = Deadline();
  const TAddresses addresses = AddressesOf(host_, port_);
  int error = 0;
  for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
    const int made = socket(address->ai_family, address->ai_socktype | SOCK_CLOEXEC, address->ai_protocol);
    if (made < 0) {
      error = errno;
      continue;
    }
    error = ConnectSocket(made, address->ai_addr, address->ai_addrlen, deadline);
    if (error == 0) {
      SetOptions(Handle());
      return;
    }
  }
  throw TransportError(kCannotConnect, host_, error);
}

}  // namespace velmora
