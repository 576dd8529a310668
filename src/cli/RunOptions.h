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

// The file with a number before its ending, the first that is not there: shop.sql, shop.2.sql, shop.3.sql.
std::string FreeFile(const std::string& path);

// Whether the unfinished run has its way back in this file, or in one of those that FreeFile made of it.
bool HasUndoIn(const std::string& path, const std::optional<TUnfinishedRun>& before);

struct TWayBack {
  std::string file{};
  bool written = false;  // by this run
};
// Writes the way back of the script that is about to run to a new file for its owner alone. That of an unfinished run
// leads on, and stays, but where the script comes to another end: then another file is needed, too, which is told. The
// journal, which may be null, has the file's name first: whatever ends the run from there on, the next one knows whose
// it is.
TWayBack WriteWayBack(const std::string& path, TJournal* journal, TDialect& dialect, const std::string& script,
                      TConsole& console);

// Raises where the script's header says that it was made for another structure than that of the connected target.
void CheckStructure(const std::string& script, TDBConn& target);

}  // namespace velmora
