// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What `sync` is asked to take care of in a run.

#include <string>

#include "app/Dialect.h"
#include "app/RunCare.h"
#include "cli/Console.h"
#include "cli/Journal.h"
#include "core/DBConn.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library named it
class App;
}

namespace velmora {

struct TRunOptions {
  TRunCare care{};
  std::string journal;  // files; empty for none
  std::string undo;
  bool allow_moved = false;  // a script runs whatever the target has become since it was written
};

void DeclareRun(CLI::App& app, TRunOptions& options);

// Raises where they ask for care in a run that the dialect does not take.
void CheckCare(const TRunOptions& options, const TExactWishes& wishes, const TDialectTraits& dialect);

// Tells what a run did that did not come to its end.
void TellUnfinished(const TUnfinishedRun& run, TConsole& console);

// A statement of such a run that the target, which this connects, still works on is waited for, for so many seconds, 0
// for as long as it takes; raises where it is not done then, naming the connection.
void WaitForUnfinished(const TUnfinishedRun& run, TDBConn& target, int seconds, TConsole& console);

// Raises where the way back cannot be written to such a file, as far as that is to be seen beforehand.
void CheckUndo(const std::string& path);

// Writes the way back to a new file for its owner alone; one that is there is an error, unless it is `kept`, the file
// of the unfinished run: what that one leads back to is what was before it. Whether the file was written.
bool WriteUndo(const std::string& path, const std::string& script, bool kept, TConsole& console);

// Raises where the script's header says that it was made for another structure than that of the connected target.
void CheckStructure(const std::string& script, TDBConn& target);

}  // namespace velmora
