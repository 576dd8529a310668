// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Relay.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace velmora::testing {

namespace {

constexpr std::size_t kHeader = 4;         // of a packet: three bytes of size, one number
constexpr char kQuery = 3, kPrepare = 22;  // the commands that carry a statement

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

bool SendAll(int to, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = send(to, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

// What has come; empty at the end.
std::string Receive(int from) {
  std::array<char, 1 << 14> buffer{};
  const ssize_t count = recv(from, buffer.data(), buffer.size(), 0);
  return count <= 0 ? std::string() : std::string(buffer.data(), static_cast<std::size_t>(count));
}

// Takes the first packet off, if it is whole.
std::string TakePacket(std::string& bytes) {
  if (bytes.size() < kHeader) return {};
  const auto byte = [&bytes](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(bytes[i])); };
  const std::size_t size = kHeader + byte(0) + (byte(1) << 8) + (byte(2) << 16);
  if (bytes.size() < size) return {};
  std::string packet = bytes.substr(0, size);
  bytes.erase(0, size);
  return packet;
}

bool IsStatement(const std::string& packet) {
  return packet.size() > kHeader && packet[kHeader - 1] == 0 &&
         (packet[kHeader] == kQuery || packet[kHeader] == kPrepare);
}

}  // namespace

TRelay::TRelay(int server_port, std::function<EFate(const std::string&)> watch)
    : server_port_(server_port), watch_(std::move(watch)), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof(address);
  if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), size) != 0 || listen(listener_, 8) != 0 ||
      getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0 || pipe2(stop_, O_CLOEXEC) != 0)
    throw std::runtime_error("relay: no port");
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { Serve(); });
}

TRelay::~TRelay() {
  close(stop_[1]);
  thread_.join();
  for (const TLink& link : links_) {
    close(link.client);
    close(link.server);
  }
  close(stop_[0]);
  close(listener_);
}

void TRelay::Accept() {
  const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
  const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = Loopback(server_port_);
  if (connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
    links_.push_back({client, server, {}});
  } else {
    close(client);
    close(server);
  }
}

bool TRelay::FromClient(TLink& link, const std::function<EFate(const std::string&)>& watch) {
  const std::string bytes = Receive(link.client);
  link.sent += bytes;
  for (std::string packet = TakePacket(link.sent); !packet.empty(); packet = TakePacket(link.sent)) {
    if (IsStatement(packet)) link.fate = watch(packet.substr(kHeader + 1));
    if (link.fate == EFate::CutBefore || !SendAll(link.server, packet)) return false;
  }
  return !bytes.empty();
}

bool TRelay::FromServer(TLink& link) {
  const std::string bytes = Receive(link.server);
  if (link.fate == EFate::Pass) return !bytes.empty() && SendAll(link.client, bytes);
  if (link.fate == EFate::CutWithin) SendAll(link.client, std::string_view(bytes).substr(0, bytes.size() / 2));
  return false;
}

void TRelay::Serve() {
  while (true) {
    std::vector<pollfd> polled{{stop_[0], POLLIN, 0}, {listener_, POLLIN, 0}};
    for (const TLink& link : links_) {
      polled.push_back({link.client, POLLIN, 0});
      polled.push_back({link.server, POLLIN, 0});
    }
    if (poll(polled.data(), polled.size(), -1) < 0) continue;
    if (polled[0].revents != 0) return;
    for (std::size_t i = links_.size(); i-- > 0;) {
      const bool goes_on = (polled[2 * i + 2].revents == 0 || FromClient(links_[i], watch_)) &&
                           (polled[2 * i + 3].revents == 0 || FromServer(links_[i]));
      if (goes_on) continue;
      close(links_[i].client);
      close(links_[i].server);
      links_.erase(links_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    if (polled[1].revents != 0) Accept();
  }
}

}  // namespace velmora::testing
