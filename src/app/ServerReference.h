// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A file of statements as the target's server understands it.

#include <memory>

#include "core/DBConn.h"
#include "engines/mysql/OfflineEngine.h"
#include "exact/run/ScratchDatabase.h"
#include "sync/Progress.h"

namespace velmora {

// Runs the file's statements on tables and indexes in a scratch database of the server of `target`, and gives an engine
// whose creation texts are those that the server prints. Both sides are connected; the file's name stays the engine's.
// A table whose statement the server refuses has an error for its text, with file and line.
//
// Raises, before anything is made on the server, for what ReadFileStatements refuses, with the file's name.
std::unique_ptr<TDBConn> ReferenceByServer(TDBConnMySQLOffline& file, TDBConn& target, TProgress& progress,
                                           const TScratchPorts& ports);

}  // namespace velmora
