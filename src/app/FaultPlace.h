// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>

#include "core/DBConn.h"
#include "core/Meta.h"

namespace velmora {

// Whether the engine stands connected. One without a connection of its own, as those that read files, cannot lose it.
bool StandsConnected(TDBConn& conn);

// Where an error arose, for messages: texts that are put before it, or empty.

// The name of a source that could not be connected, unless the message has it already.
std::string SourcePlace(TDBConn& conn, const std::string& error);
// The line of a table's creation text in a script file, as in "FILE: line 12: table t"; of a server "NAME: table t".
std::string TablePlace(TDBConn& conn, const std::string& table);
// The line of a view's, trigger's, routine's or event's text in a script file, as in "FILE: line 12"; else empty.
std::string ObjectPlace(TDBConn* conn, const std::string& kind, const std::string& name);
// The side of a comparison whose connection is lost, or whose table cannot be read for that very reason; else the table
// alone. `target_lost` tells it of the target that was compared; the one given is the copy in its place, which may be
// connected here to look at the table.
std::string ComparisonPlace(TDBConn* reference, TDBConn* target, bool target_lost, const std::string& table,
                            const std::string& error);

// The line of the statement of `text` that a MySQL store, filled as `before`, refuses with this error; 0 when it cannot
// be told.
std::size_t FaultLine(const std::string& text, const std::string& error, const TMeta& before);

}  // namespace velmora
