// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Runs a script on the target, statement by statement, up to the first error.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/ScriptSplitter.h"
#include "sync/Progress.h"
#include "sync/ScriptEditor.h"
#include "sync/TaskConnections.h"
#include "util/Lists.h"

namespace velmora {

enum class ERunState { NotRun, Running, Done, Failed, Cancelled };

// What became of one statement.
struct TStatementRun {
  ERunState state = ERunState::NotRun;
  double seconds = 0;                // that it took
  std::optional<std::int64_t> rows;  // affected, where the engine tells
  int error = 0;                     // the number of the server's error; 0: none, or none is known
  std::string words;                 // the error; of a statement that ran the server's warnings, a line each
  std::string put_back{};  // what became of the old text that it was to replace, where the run ended here or before it
  int tries = 1;           // that it took
  bool in_steps = false;   // it was carried out in several: one that failed may have done a part
};

// What became of a run, also of one that failed or was cancelled.
struct TRunReport {
  std::vector<TScriptStatement> statements;
  std::vector<TStatementRun> runs;    // of each statement
  double seconds = 0;                 // from the first statement to the end of the transaction
  bool ended = false;                 // nothing more comes
  bool cancelled = false;             // what ended it was the user's wish
  std::size_t executed = 0;           // statements that the server has accepted
  std::optional<std::size_t> failed;  // index of the statement that it refused
  bool committing = false;            // every statement ran, and the commit was sent
  bool committed = false;
  bool lost = false;                   // the connection is gone: what the last statement did is not known
  std::optional<std::size_t> settled;  // statements that the server was seen to have put in force, where it told

  // How many of the executed statements are in force for good: by what the server told, else by what is known of
  // statements. A change of structure commits by itself, with all that ran before it, and ends the transaction, so that
  // what follows is in force at once too.
  std::size_t InForce() const;
  // The connection was lost while the server may have been committing, at the end or by a change of structure: what
  // InForce leaves out may be in force all the same.
  bool CommitUnknown() const;
  // Of a run that has ended: the target is as it was, for certain.
  bool DidNothing() const;
};

struct TRunWishes {
  bool transaction = true;  // one for the whole script
  bool warnings = false;    // the server is asked for its warnings after a statement that has some
  // What goes to the server for the text of a statement; none: the text itself.
  std::function<std::string(const std::string& text)> sent{};
  // Executes what goes to the server, and gives the rows affected, -1 where that is not known; may fill the run's tries
  // and words. none: the target does.
  std::function<std::int64_t(const std::string& sent, TStatementRun& run)> execute{};
  // What restores what the statement was to replace, where it was refused or the run ended just before it; none:
  // nothing does.
  std::function<TStringList(const std::string& text)> put_back{};
};

class TScriptRunner {
 public:
  // All outlive this object.
  TScriptRunner(TTaskConnections& connections, TScriptEditor& editor, TProgress& progress)
      : connections_(connections), editor_(editor), progress_(progress) {}

  // Called with the report when the script is cut, when a statement begins and ends, and at the end of the run. What it
  // raises before a statement ends the run there; at the end of the run it raises nothing.
  std::function<void(const TRunReport& report)> OnProgress;

  // Cuts `text` into statements by `split` and executes them on the target, in one transaction if that is wished. The
  // first error ends the run: the caret goes to the position of the failed statement, its line is marked, what the
  // transaction still holds is rolled back, and the error passes on. The host may end it between two statements by
  // raising from its message pump.
  void RunScript(const std::string& text, const TRunWishes& wishes = {}, TScriptSplitter split = SplitScript);
  const TRunReport& Report() const { return report_; }  // of the last run
  void ForgetRun() { report_ = {}; }

 private:
  void Execute(TDBConn& target, std::size_t pieces, const TRunWishes& wishes);
  void RunNext(TDBConn& target, const TRunWishes& wishes);
  void Begin(TStatementRun& run) const;
  void MarkFailed(std::size_t index);
  void PutBack(TDBConn& target, std::size_t index, const TRunWishes& wishes);
  void Tell() const {
    if (OnProgress) OnProgress(report_);
  }
  void Settle(TDBConn& target, bool after_error);
  static void RollBack(TDBConn& target, bool done);

  TTaskConnections& connections_;
  TScriptEditor& editor_;
  TProgress& progress_;
  TRunReport report_;
};

}  // namespace velmora
