#pragma once

// What became of a run, in words: the same in the window and in the companion.

#include <string>

#include "app/ScriptRunner.h"
#include "core/DBConn.h"
#include "util/Lists.h"

namespace velmora {

// A run of `script` on `target` that ended with `error`: the statement that failed with its number and place, the
// error, whether the connection to the target is lost and what that leaves open, what is in force and what was rolled
// back. A lost connection is asked for its reason, by a connection of its own. Raises nothing of a server's.
TStringList FailureLines(TDBConn& target, const TRunReport& report, const std::string& script,
                         const std::string& error);

// A run that came to its end: "3 statements ran on NAME."
std::string SuccessLine(TDBConn& target, const TRunReport& report);

// A statement as messages show it: its first line, cut, control characters as "?".
std::string ShownStatement(const std::string& statement);

}  // namespace velmora
