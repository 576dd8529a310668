// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cli/Command.h"
#include "cli/FleetOptions.h"
#include "cli/Journal.h"
#include "cli/RunOptions.h"
#include "cli/SourceOptions.h"
#include "persist/TaskMarks.h"
#include "report/ComparisonReport.h"

namespace velmora {

class TPairRun;

// Shows the plan, asks on the terminal unless told not to, runs the script and reports what is in force. Runs nothing
// when unsafe actions are not allowed or rows stand in the way. Status 0 when all statements ran and, in the exact
// dialect, the second comparison finds the tables identical.
class TSyncCommand final : public TCommand {
 public:
  const char* Name() const override { return "sync"; }
  const char* Summary() const override { return "Run the script, or one of a file, on the target"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  int SyncMany(TConsole& console);
  bool Prepare(TPairRun& run, TConsole& console, int& status);
  void CheckDatabaseName(const TTaskMarks& marks, TDBConn& target, const TConsole& console) const;
  bool DatabaseConfirmed(TPairRun& run, TConsole& console) const;
  int Sync(TPairRun& run, TConsole& console);
  int TellResult(TPairRun& run, TConsole& console);
  bool MayRun(TPairRun& run, std::string& script, TConsole& console);
  void OpenFiles(TDBConn& target, TConsole& console);
  void OpenJournal(TDBConn& target, TConsole& console);
  void TakeCare(TPairRun& run, const std::string& script, TConsole& console);

  TPair pair_;
  TFleetOptions fleet_;
  TFleetSyncOptions fleet_sync_;
  EFormat format_ = EFormat::Text;  // of many targets alone
  const CLI::App* app_ = nullptr;
  std::string script_;  // a file to run instead of the plan; empty for none
  TSourceOptions options_;
  TRunOptions run_;
  std::unique_ptr<TJournal> journal_;
  TStringList reports_;
  std::optional<TReport> report_;  // of the comparison before the run, where one was asked for
  TWayBack way_back_;
  bool allow_unsafe_ = false;
  bool no_row_checks_ = false;
  int row_check_time_ = 30;  // seconds
  bool yes_ = false;
  std::optional<std::string> confirmed_;  // the target database's name, as given
};

}  // namespace velmora
