// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "mysqlclient/MyWire.h"

namespace velmora {

// Which running server stands at the other end of a wire, as it says itself: one address may lead to several.
struct TServerIdentity {
  std::string names;         // host, port and numbers, by name
  std::int64_t started = 0;  // seconds by the server's own clock, give or take one
};

// Nothing where the server does not say enough, or numbers the connection otherwise than its greeting did, as one does
// that passes statements on. Raises EMySqlException when the wire is lost. Sends statements: for a wire at rest.
std::optional<TServerIdentity> IdentityOf(TMyWire& wire);
bool IsSameServer(const TServerIdentity& one, const TServerIdentity& other);

}  // namespace velmora
