// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What became of a run, in words: the same in the window and in the companion.

#include <cstddef>
#include <string>
#include <string_view>

#include "app/ScriptRunner.h"
#include "core/DBConn.h"
#include "util/Lists.h"

namespace velmora {

// A run of `script` on `target` that ended with `error`: the statement that failed with its number and place, the
// error, whether the connection to the target is lost and what that leaves open, what is in force and what was rolled
// back. A lost connection is asked for its reason, by a connection of its own. Raises nothing of a server's.
TStringList FailureLines(TDBConn& target, const TRunReport& report, const std::string& script,
                         const std::string& error);

// The same without the list of the statements that are in force; and that list, at the end of `lines`.
TStringList FailureSummary(TDBConn& target, const TRunReport& report, const std::string& script,
                           const std::string& error);
void ListInForce(const TRunReport& report, TStringList& lines);

// How far a run has come, or how it ended: "12 of 12 statements in 3.4 s."
std::string RunSentence(const TRunReport& report);
std::string ServerWords(const TStatementRun& run);  // "Error 1264: Out of range ...", or the warnings
std::string StateWord(ERunState state);             // "done", "failed", ...
std::string DurationText(double seconds);           // "<1 ms", "12 ms", "3.4 s", "2 min 5 s"
// Whether what a statement did is in force, of one that ran in a run that has ended: "in force", "rolled back", "not
// known"; otherwise empty.
std::string ForceWord(const TRunReport& report, std::size_t statement);
// A run as a text to keep: `lines` on top, then each statement of `script` with its state, duration, rows, place and
// the server's words.
std::string RunText(const TRunReport& report, const std::string& script, const TStringList& lines);
// The line of a place in a text, from 1, for many places in rising order.
class TLineCounter {
 public:
  explicit TLineCounter(std::string_view text) : text_(text) {}
  std::size_t LineAt(std::size_t start);

 private:
  std::string_view text_;
  std::size_t counted_ = 0;
  std::size_t line_ = 1;
};

// A run that came to its end: "3 statements ran on NAME."
std::string SuccessLine(TDBConn& target, const TRunReport& report);

// A statement as messages show it: its first line, cut, control characters as "?".
std::string ShownStatement(const std::string& statement);

}  // namespace velmora
