// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <optional>

#include "mysqlnet/MySqlVio.h"

namespace velmora {

// What the transports over a socket have in common. A peer that closes never raises a signal.
class TMySqlVioSocket : public TMySqlVio {
 public:
  ~TMySqlVioSocket() override { TMySqlVioSocket::Close(); }

  void SetTimeout(int seconds) override;
  void Close() override;
  std::size_t Read(char* buffer, std::size_t offset, std::size_t count) override;
  std::size_t Write(const char* buffer, std::size_t offset, std::size_t count) override;
  std::string Fault() const override { return fault_; }
  int Handle() const override { return socket_; }

 protected:
  using TClock = std::chrono::steady_clock;
  using TDeadline = std::optional<TClock::time_point>;  // none: for ever

  TDeadline Deadline() const;
  // Takes over a new socket and connects it to an address of the system's; gives the system's error, 0 when it is
  // connected. Otherwise the socket is closed again.
  int ConnectSocket(int socket, const void* address, std::size_t size, const TDeadline& deadline);

 private:
  static constexpr std::size_t kAhead = 16384;

  void SetSocketTimeout(std::chrono::microseconds time) const;  // 0 is for ever
  std::size_t Receive(char* to, std::size_t count);             // some bytes; 0 when there will be none
  void SetFault(int error);

  int socket_ = -1;  // closed
  int timeout_ = 0;
  std::string fault_;
  std::array<char, kAhead> ahead_{};  // read, and not yet asked for
  std::size_t ahead_position_ = 0;
  std::size_t ahead_length_ = 0;
};

}  // namespace velmora
