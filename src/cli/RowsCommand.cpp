// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/RowsCommand.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <new>
#include <ostream>

#include "app/FaultPlace.h"
#include "app/Sources.h"
#include "cli/RowOutput.h"
#include "cli/SourceRun.h"
#include "util/Errors.h"

namespace velmora {

void TRowsCommand::Declare(CLI::App& app) {
  app.add_option("SOURCE", source_, "The database")->required();
  app.add_option("TABLE", table_, "The table")->required();
  DeclareNumber(app, "--limit", 0, std::numeric_limits<std::int64_t>::max(), "Show at most N rows",
                [this](std::int64_t limit) { limit_ = limit; });
  DeclareFormat(app, format_);
  options_.DeclareOne(app);
}

int TRowsCommand::Execute(TConsole& console) {
  const std::unique_ptr<TRowOutput> output = MakeRowOutput(format_, console.out);
  std::unique_ptr<TDBConn> conn;
  try {
    TSourceSettings settings = options_.ForOne(console);
    settings.Client.TimesAsSent = true;
    conn = MakeSource(source_, settings);
    SettleSocket({conn.get()});
    conn->fetch_in_chunks = true;
    ConnectNamed(*conn);
    TTableGuard rows(*conn, table_);
    output->Begin(rows->Fields());
    for (std::int64_t count = 0; !rows->Eof() && (limit_ < 0 || count < limit_); ++count, rows->Next())
      output->Row(*rows);
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    const bool placed = conn == nullptr || SourcePlace(*conn, error.what()).empty();
    console.Error(placed ? error.what() : Placed(TablePlace(*conn, table_), error.what()));
    output->End(console.Without(error.what()));
    return kExitFailure;
  } catch (const std::bad_alloc&) {
    console.Error(kOutOfMemory);
    output->End(kOutOfMemory);
    return kExitFailure;
  }
  output->End(std::nullopt);
  return kExitSuccess;
}

}  // namespace velmora
