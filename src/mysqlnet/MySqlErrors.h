// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The errors that a client finds by itself, by their published numbers. For this folder only: what leaves it is an
// EMySqlException or, from a transport, a SocketException with number and text. A server's own errors carry the number
// and text that it sent, and pass through unchanged.

#include <string>
#include <string_view>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

inline constexpr char kMySqlHost[] = "localhost";  // of a connection that names none

enum EMySqlError {
  kCannotConnectLocally = 2002,
  kCannotConnect = 2003,
  kUnknownHost = 2005,
  kProtocolMismatch = 2007,
  kNoMemoryLeft = 2008,
  kBadHandshake = 2012,
  kConnectionLost = 2013,
  kOutOfSync = 2014,
  kPacketTooLarge = 2020,
  kTlsFailed = 2026,
  kMalformedPacket = 2027,
  kUnknownProtocol = 2046,
  kUnknownPlugin = 2059,
  kLoginRefused = 2061,
  kFileRefused = 2068,
  kSecondFactor = 2060,
  kPacketsOutOfOrder = 1156,  // these two have a server's numbers
  kNotInflated = 1157
};

// The text of a number, with its %s and %d; "Unknown MySQL error" for one that has none.
std::string_view MySqlErrorText(int number);

// Ready to be thrown; `args` fill the text, in its order. They must be free of passwords.
template <class... Args>
EMySqlException ClientError(int number, const Args&... args) {
  return {number, Format(MySqlErrorText(number), args...)};
}

template <class... Args>
SocketException TransportError(int number, const Args&... args) {
  return {number, Format(MySqlErrorText(number), args...)};
}

}  // namespace velmora
