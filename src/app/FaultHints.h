// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a client's error leaves unsaid, for the reader of a failed run.

#include <string>

#include "app/ScriptRunner.h"
#include "core/DBConn.h"

namespace velmora {

// A server that gets a larger statement than it takes hangs up, often before its answer is read. Where that looks like
// the reason of a connection to `target` that is lost, this says so with the statement's size and, if the server can be
// asked for it by a connection of its own, the limit; otherwise it is empty. Raises nothing.
std::string PacketHint(TDBConn& target, const TRunReport& report);

}  // namespace velmora
