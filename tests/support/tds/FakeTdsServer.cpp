#include "support/tds/FakeTdsServer.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "support/tds/TdsSession.h"

namespace velmora::testing {

TFakeTdsServer::TFakeTdsServer() : catalog_(folder_.Path()) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* plain = reinterpret_cast<sockaddr*>(&address);
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(listener_, plain, size) != 0 || listen(listener_, 16) != 0 || getsockname(listener_, plain, &size) != 0)
    throw std::runtime_error("no port to listen on");
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { Accept(); });
}

TFakeTdsServer::~TFakeTdsServer() {
  shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  for (const int connection : connections_) shutdown(connection, SHUT_RDWR);
  for (std::thread& session : sessions_) session.join();
  for (const int connection : connections_) close(connection);
  close(listener_);
}

void TFakeTdsServer::Accept() {
  for (int connection; (connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    connections_.push_back(connection);
    sessions_.emplace_back([this, connection] {
      TTdsSession(*this, connection).Serve();
      if (!then_silent) shutdown(connection, SHUT_RDWR);
    });
  }
}

void TFakeTdsServer::Note(const std::string& text) {
  const std::lock_guard lock(mutex_);
  received_.push_back(text);
}

std::vector<std::string> TFakeTdsServer::Received() const {
  const std::lock_guard lock(mutex_);
  return received_;
}

}  // namespace velmora::testing
