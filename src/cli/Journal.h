// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The journal of runs: a file with a line of JSON before and after each statement, which is on the disk before the
// statement goes to the server. So it tells, whatever ends a run, what was done and what was under way.

#include <cstddef>
#include <optional>
#include <string>

#include "app/ScriptRunner.h"
#include "util/Clock.h"

namespace velmora {

// The last run of a journal, where that did not come to its end.
struct TUnfinishedRun {
  std::string begun;     // when
  std::string undo;      // the file with the way back that it wrote; empty for none
  std::string end;       // the digest of the structure that it was to lead to; empty where nobody knows
  bool changed = false;  // a statement may have run since that was written
  std::size_t all = 0;   // statements
  std::size_t done = 0;  // that the server has accepted
  std::string error;     // that ended it, if anything was heard of that
  struct TUnderWay {
    std::size_t number = 0;  // from 1
    std::string text;
    int process = 0;  // of the copy tool that was at it; 0 for none
    std::string program;
    std::string login;  // the file with its login, which it may have left behind
  };
  std::optional<TUnderWay> under_way;
};

class TJournal {
 public:
  // Opens the file, or makes it for its owner alone, and reads what it holds. A last line that was cut off in the
  // writing is taken away. Raises where the file cannot be had, is used by another run, is no journal or a damaged one,
  // or is of runs on another target.
  TJournal(std::string path, std::string target, const TClock& clock);
  ~TJournal();
  TJournal(const TJournal&) = delete;
  TJournal& operator=(const TJournal&) = delete;

  std::string Undo;  // of the run that follows: the file with the way back
  std::string End;   // and the digest of the structure that it leads to
  const std::optional<TUnfinishedRun>& Unfinished() const { return unfinished_; }

  // Writes that a run of so many statements begins, as long as nothing has: before its way back is written.
  void Begin(std::size_t statements);
  // Writes what the report tells that the file does not have yet: to be called at each change of it. Raises where the
  // file cannot be written, but not at the end of a run.
  void Told(const TRunReport& report);
  void ToolRuns(int process, const std::string& program, const std::string& login);

 private:
  void Open();
  void Read();
  void Keep() const;
  void Write(const std::string& line) const;
  void TellStatements(const TRunReport& report);

  std::string path_;
  std::string target_;
  const TClock& clock_;
  int file_ = -1;
  std::optional<TUnfinishedRun> unfinished_;
  bool begun_ = false;         // the run that is written
  std::size_t begun_one_ = 0;  // statements whose beginning stands there
  std::size_t ended_one_ = 0;  // and whose end does
};

}  // namespace velmora
