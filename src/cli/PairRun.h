// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/Application.h"
#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/SourceOptions.h"
#include "persist/TaskMarks.h"
#include "report/FailOn.h"
#include "sync/Progress.h"
#include "util/Clock.h"

namespace velmora {

struct TReport;

// A pair of databases opened for one command, with all that the comparison reports to.
class TPairRun {
 public:
  TPairRun(TConsole& console, const TClock& clock);

  TApplication& app() { return app_; }
  TLineEditor& editor() { return editor_; }
  const TTaskMarks& Marks() const { return marks_; }    // of the task file, once its sides were made
  const TExactWishes& Exact() const { return exact_; }  // as asked for, the task's own included
  // Called when the sides were made, before any is connected; may raise.
  std::function<void(TDBConn& target)> OnMade;

  // Opens both sides and compares them, `for_script` if that follows. Warnings of the sources go to the console. Gives
  // the message of an error, with what was found so far in the application; the place of the error goes to the console
  // too.
  std::optional<std::string> Compare(const TPair& pair, const TSourceOptions& options, bool for_script);
  // Compares the opened pair once more; reports as Compare does.
  std::optional<std::string> CompareAgain();
  // Tries the script in a scratch database of the target's server; Ctrl+C ends that, with the database removed. Gives
  // how many differences are left, which the console is told too. An error is reported in the same way.
  std::optional<std::string> VerifyOnServer(std::optional<int>& left);
  // What the target's rows say to the script; an error is reported in the same way.
  std::optional<std::string> CheckRows(int seconds, std::vector<TRowFinding>& findings);
  // The script for what was compared; an error is reported in the same way.
  std::optional<std::string> GenerateScript();
  // What of it makes the command fail; none where nothing was asked for. An error is reported in the same way.
  std::optional<std::string> LookForFailures(const TFailOnWishes& wishes);
  const std::vector<TFailure>& Failures() const { return failures_; }
  // Gathers the report on what was compared, with the script that was generated and what makes the command fail; an
  // error is reported in the same way.
  std::optional<std::string> GatherReport(TReport& report);
  // Opens the target alone.
  void OpenTarget(const TPair& pair, const TSourceOptions& options);
  void EndProgress() { progress_->Finish(); }
  // Takes leave of the servers.
  void HangUp();

 private:
  TSourceSettings AskingWithoutBar(TSourceSettings settings);
  // Also settles the dialect.
  TTaskConnections Make(const TPair& pair, const TSourceOptions& options);
  void Open(const TPair& pair, const TSourceOptions& options, bool for_script);
  // A reference without tables is refused, or told of.
  void LookAtReference(const TPair& pair, bool for_script);
  void ReadReferenceOnServer();
  // Runs `work`, which uses a scratch database: it ends by signals too, with the database removed.
  void WithScratch(const std::function<void(const TScratchPorts& ports)>& work);
  template <class Body>
  std::optional<std::string> Reported(Body body);

  TConsole& console_;
  const TClock& clock_;
  std::unique_ptr<TProgress> progress_;
  TLineEditor editor_;
  TLineLog log_;
  std::unique_ptr<TDBConn> compared_;  // the target that a copy has taken the place of; freed with the run
  TApplication app_;
  TTaskMarks marks_;
  std::vector<TFailure> failures_;
  TForeignWishes foreign_;  // of the command and the task file
  TExactWishes exact_;      // likewise
};

// Progress on the console's terminal, or none where it is no terminal.
std::unique_ptr<TProgress> MakeProgress(TConsole& console);

}  // namespace velmora
