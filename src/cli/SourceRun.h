// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// One database opened for a command.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/StructureView.h"
#include "cli/Command.h"
#include "cli/Console.h"
#include "core/DBConn.h"

namespace velmora {

// What is known of a connected source that the user should hear of; with `verbose` all of it. `applies_statements`: the
// statements of a file are applied, so that nothing is said of those that others pass over.
void WarnOfSource(TDBConn& conn, bool verbose, TConsole& console, bool applies_statements = false);
// Of these what became known since it was last told: a file that was made, what was passed over.
void TellWarnings(TDBConn& conn, TConsole& console);

// Connects; an error names the source.
void ConnectNamed(TDBConn& conn);

// "PLACE: MESSAGE", or the message alone.
std::string Placed(const std::string& place, const std::string& message);

// The bytes of a text file. Raises with its name, NUL bytes included.
std::string ReadTextFile(const std::string& path);

// What a command shows of a database, filled as far as it gets.
struct TStructure {
  int engine = 0;
  std::string display_name;
  std::vector<TTableView> tables;
  std::optional<std::string> error;  // of the command as a whole
};

// Runs `fill`, reports its error and those of single tables, prints what there is, and gives the exit status.
int ShowStructure(TConsole& console, EFormat format, const std::function<void(TStructure&)>& fill);

// Connects, warns, fetches each of `tables` (all when that is empty) and hands each view to `take`.
void FetchTables(TDBConn& conn, const TStringList& tables, bool verbose, TConsole& console,
                 const std::function<void(TTableView)>& take);

}  // namespace velmora
