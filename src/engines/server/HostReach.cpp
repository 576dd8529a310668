// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/HostReach.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace velmora {

namespace {

using std::chrono::steady_clock;

enum class EReach { Taken, Refused, Silent };

class TSocket {
 public:
  explicit TSocket(const addrinfo& address)
      : socket_(socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol)) {}
  ~TSocket() {
    if (socket_ >= 0) close(socket_);
  }
  TSocket(const TSocket&) = delete;
  TSocket& operator=(const TSocket&) = delete;

  int get() const { return socket_; }

 private:
  int socket_;
};

// What became of a connection that is under way.
EReach Outcome(int socket) {
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size);
  if (error == 0) return EReach::Taken;
  return error == ETIMEDOUT ? EReach::Silent : EReach::Refused;
}

EReach Reach(const addrinfo& address, steady_clock::time_point end) {
  const TSocket attempt(address);
  if (attempt.get() < 0) return EReach::Refused;
  if (connect(attempt.get(), address.ai_addr, address.ai_addrlen) == 0) return EReach::Taken;
  if (errno != EINPROGRESS) return EReach::Refused;
  while (true) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now()).count();
    pollfd waiting{.fd = attempt.get(), .events = POLLOUT, .revents = 0};
    const int ready = poll(&waiting, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
    if (ready > 0) return Outcome(attempt.get());
    if (ready == 0) return EReach::Silent;
    if (errno != EINTR) return EReach::Refused;
  }
}

}  // namespace

bool HostReacts(const std::string& host, const std::string& service, std::chrono::milliseconds limit) {
  addrinfo wanted{};
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host.c_str(), service.c_str(), &wanted, &found) != 0) return true;
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(found, freeaddrinfo);
  const auto end = steady_clock::now() + limit;
  for (const addrinfo* address = found; address != nullptr; address = address->ai_next) {
    const EReach reach = Reach(*address, end);
    if (reach != EReach::Refused) return reach == EReach::Taken;
  }
  return true;
}

}  // namespace velmora
