// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What became of the script of a report, where it was run.

#include <string>
#include <vector>

#include "app/ScriptRunner.h"
#include "util/Lists.h"

namespace velmora {

struct TReportStatement {
  std::string text;
  ERunState state = ERunState::NotRun;
  std::string took;   // "12 ms"; empty for what was not run
  std::string force;  // "in force", "rolled back", ...; may be empty
  std::string words;  // the server's error or warnings; may have lines
};

struct TReportRun {
  bool done = false;     // every statement ran, and a comparison afterwards, where there was one, found no difference
  std::string sentence;  // "12 of 12 statements in 3.4 s."
  TStringList lines;     // how it ended: the error, what is in force
  std::string verdict;   // of the comparison afterwards; empty where there was none
  std::vector<TReportStatement> statements;

  void SetVerdict(bool identical, const std::string& text);
};

// Of a run that has ended, or that never began where `report` has no statements; `lines`: how it ended.
TReportRun RunPartOf(const TRunReport& report, const TStringList& lines);

}  // namespace velmora
