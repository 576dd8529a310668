// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The transport below a MySQL connection: bytes to and from a server, nothing else.

#include <cstddef>
#include <string>

namespace velmora {

// Created closed. A destructor closes and raises nothing.
class TMySqlVio {
 public:
  TMySqlVio() = default;
  TMySqlVio(const TMySqlVio&) = delete;
  TMySqlVio& operator=(const TMySqlVio&) = delete;
  virtual ~TMySqlVio() = default;

  // The most seconds that Connect takes and that Read and Write wait for a peer that does nothing. A peer that does too
  // little is given up by Read after twice that at most. 0 is for ever. May be called at any time.
  virtual void SetTimeout(int seconds) = 0;
  virtual void Connect() = 0;  // raises SocketException with the number of a client error
  virtual void Close() = 0;    // raises nothing, may be called again
  // Both work from `buffer + offset` on and give the count that was read or written: less than `count` only when the
  // peer is gone, the transport is closed or the time is up. They raise nothing.
  virtual std::size_t Read(char* buffer, std::size_t offset, std::size_t count) = 0;
  virtual std::size_t Write(const char* buffer, std::size_t offset, std::size_t count) = 0;

  // Why the last Read or Write fell short, for a message; empty when the peer is gone.
  virtual std::string Fault() const { return {}; }
  // Nobody on the way can read along, so that a password may be sent as it is.
  virtual bool IsPrivate() const { return false; }
  // The system's number of what is open below, for whoever wants to end it from outside and duplicates it; -1: there is
  // none.
  virtual int Handle() const { return -1; }
};

}  // namespace velmora
