// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <string>

namespace velmora {

// False when `host` leaves an attempt to connect unanswered for `limit`. True when it takes one, refuses all of them,
// or cannot be found: whoever connects after this is told at once. `service` is a name or a port's number. Any
// connection that came about is closed again.
bool HostReacts(const std::string& host, const std::string& service, std::chrono::milliseconds limit);

}  // namespace velmora
