// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlVioSocket.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kSilence[] = "no answer within %d seconds";

bool TimeIsUp(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINPROGRESS; }

}  // namespace

void TMySqlVioSocket::SetTimeout(int seconds) {
  seconds = std::max(seconds, 0);
  if (std::exchange(timeout_, seconds) != seconds) SetSocketTimeout(std::chrono::seconds(seconds));
}

void TMySqlVioSocket::SetSocketTimeout(std::chrono::microseconds time) const {
  if (socket_ < 0) return;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  timeval value{};
  value.tv_sec = seconds.count();
  value.tv_usec = (time - seconds).count();
  setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &value, sizeof(value));
  setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &value, sizeof(value));
}

TMySqlVioSocket::TDeadline TMySqlVioSocket::Deadline() const {
  if (timeout_ == 0) return std::nullopt;
  return TClock::now() + std::chrono::seconds(timeout_);
}

// A blocking socket keeps to its time-out while it connects, too.
int TMySqlVioSocket::ConnectSocket(int socket, const void* address, std::size_t size, const TDeadline& deadline) {
  Close();
  socket_ = socket;
  if (deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(*deadline - TClock::now());
    if (left.count() <= 0) {
      Close();
      return ETIMEDOUT;
    }
    SetSocketTimeout(left);
  }
  if (connect(socket_, static_cast<const sockaddr*>(address), static_cast<socklen_t>(size)) != 0) {
    const int error = TimeIsUp(errno) ? ETIMEDOUT : errno;
    Close();
    return error;
  }
  SetSocketTimeout(std::chrono::seconds(timeout_));
  return 0;
}

void TMySqlVioSocket::Close() {
  if (socket_ < 0) return;
  shutdown(socket_, SHUT_RDWR);
  close(socket_);
  socket_ = -1;
  ahead_position_ = ahead_length_ = 0;
}

void TMySqlVioSocket::SetFault(int error) {
  if (TimeIsUp(error))
    fault_ = Format(kSilence, timeout_);
  else
    fault_ = error == EPIPE || error == ECONNRESET ? "" : std::strerror(error);
}

std::size_t TMySqlVioSocket::Receive(char* to, std::size_t count) {
  for (;;) {
    const ssize_t received = recv(socket_, to, count, 0);
    if (received >= 0) {
      fault_.clear();
      return static_cast<std::size_t>(received);
    }
    if (errno == EINTR) continue;
    SetFault(errno);
    return 0;
  }
}

std::size_t TMySqlVioSocket::Read(char* buffer, std::size_t offset, std::size_t count) {
  char* to = buffer + offset;
  std::size_t done = 0;
  TDeadline deadline;
  while (done < count && socket_ >= 0) {
    const std::size_t left = count - done;
    if (const std::size_t ready = std::min(ahead_length_ - ahead_position_, left); ready > 0) {
      std::copy_n(ahead_.data() + ahead_position_, ready, to + done);
      ahead_position_ += ready;
      done += ready;
      continue;
    }
    if (!deadline) {
      deadline = Deadline();
    } else if (TClock::now() > *deadline) {  // a peer that sends a byte now and then
      SetFault(EAGAIN);
      break;
    }
    if (left >= kAhead) {
      const std::size_t received = Receive(to + done, left);
      if (received == 0) break;
      done += received;
    } else {
      ahead_position_ = 0;
      ahead_length_ = Receive(ahead_.data(), kAhead);
      if (ahead_length_ == 0) break;
    }
  }
  return done;
}

std::size_t TMySqlVioSocket::Write(const char* buffer, std::size_t offset, std::size_t count) {
  std::size_t done = 0;
  while (done < count && socket_ >= 0) {
    const ssize_t sent = send(socket_, buffer + offset + done, count - done, MSG_NOSIGNAL);
    if (sent >= 0) {
      done += static_cast<std::size_t>(sent);
    } else if (errno != EINTR) {
      SetFault(errno);
      break;
    }
  }
  return done;
}

}  // namespace velmora
