// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RunTelling.h"

#include <algorithm>

#include "app/FaultHints.h"
#include "app/FaultPlace.h"
#include "app/SideNames.h"
#include "util/Counted.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kListedStatements = 20;
constexpr std::size_t kShownChars = 120;

std::string NameOf(TDBConn& target) {
  std::string name;
  target.GetDisplayName(name);
  return name + SocketOf(target);
}

// "line 3, column 1" of a place in the script, counting characters from 1.
std::string PlaceIn(const std::string& script, std::size_t start) {
  const std::string_view before = std::string_view(script).substr(0, start);
  const std::size_t line_start = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  return Format("line %d, column %d", line, CharCount(before.substr(line_start)) + 1);
}

// Nothing is open where the connection was lost with nothing under way.
std::string WhatLossLeavesOpen(const TRunReport& report, const std::string& hint) {
  if (!hint.empty()) return ": " + hint;
  if (report.failed) return ": whether that statement took effect is not known";
  return report.committing ? ": whether the commit took effect is not known" : "";
}

// Of the statements that ran before the failure, of which there are some.
std::string ForceLine(const TRunReport& report) {
  const std::size_t count = report.InForce();
  const bool unknown = report.CommitUnknown();
  const std::string ran = Format("%d of %d statements ran before it", report.executed, report.statements.size());
  if (count == 0)
    return ran + (unknown ? ", and whether they are in force is not known"
                          : " and were rolled back; tables without transactions keep what was done to them");
  if (count == report.executed)
    return ran + " and are in force: the server commits each change of structure at once, with all around it";
  return ran + Format("; the first %d are in force, ", count) +
         (unknown ? "and whether the others are is not known" : "the others were rolled back");
}

std::string SummaryOfForce(const TRunReport& report) {
  if (report.executed > 0) return ForceLine(report);
  return report.lost ? "no statement ran before it" : "no statement ran before it: the target is as it was";
}

// Of the statement that a run came to and did not do.
std::string CameToLine(const TRunReport& report, std::size_t number, const std::string& script) {
  const TScriptStatement& statement = report.statements[number];
  const bool cancelled = number < report.runs.size() && report.runs[number].state == ERunState::Cancelled;
  const char* what = !report.failed ? "did not run" : cancelled ? "was cancelled" : "failed";
  return Format("statement %d of %d %s at %s: %s", number + 1, report.statements.size(), what,
                PlaceIn(script, statement.start), ShownStatement(statement.text));
}

// One statement of a run, its words below it.
std::string StatementText(const TRunReport& report, std::size_t index, std::size_t line) {
  const TStatementRun& run = report.runs[index];
  TStringList facts = {StateWord(run.state)};
  if (run.state != ERunState::NotRun) facts.push_back(DurationText(run.seconds));
  if (run.tries > 1) facts.push_back(Format("%d tries", run.tries));
  if (run.rows) facts.push_back(Counted(static_cast<std::size_t>(*run.rows), "row"));
  if (const std::string force = ForceWord(report, index); !force.empty()) facts.push_back(force);
  std::string text = Format("%d: %s: line %d: %s\n", index + 1, JoinList(facts, ", "), line,
                            ShownStatement(report.statements[index].text));
  for (const std::string& words : LinesOf(ServerWords(run))) text += "    " + words + "\n";
  if (!run.put_back.empty()) text += "    " + run.put_back + "\n";
  return text;
}

}  // namespace

void ListInForce(const TRunReport& report, TStringList& lines) {
  const std::size_t count = report.executed > 0 ? report.InForce() : 0;
  const std::size_t from = count > kListedStatements ? count - kListedStatements : 0;
  if (from > 0) lines.push_back(Format("  (the first %d are not listed)", from));
  for (std::size_t i = from; i < count; ++i)
    lines.push_back(Format("  %d: %s", i + 1, ShownStatement(report.statements[i].text)));
}

TStringList FailureSummary(TDBConn& target, const TRunReport& report, const std::string& script,
                           const std::string& error) {
  TStringList lines;
  const bool put_back = report.executed < report.runs.size() && !report.runs[report.executed].put_back.empty();
  if (report.failed || put_back) lines.push_back(CameToLine(report, report.failed.value_or(report.executed), script));
  lines.push_back(error);
  if (put_back) lines.push_back(report.runs[report.executed].put_back);
  if (report.lost || (report.statements.empty() && !StandsConnected(target)))
    lines.push_back(Format("the connection to the target %s is lost", NameOf(target)) +
                    WhatLossLeavesOpen(report, PacketHint(target, report)));
  lines.push_back(SummaryOfForce(report));
  return lines;
}

TStringList FailureLines(TDBConn& target, const TRunReport& report, const std::string& script,
                         const std::string& error) {
  TStringList lines = FailureSummary(target, report, script, error);
  ListInForce(report, lines);
  return lines;
}

std::string RunSentence(const TRunReport& report) {
  const std::size_t all = report.statements.size();
  const std::string time = DurationText(report.seconds);
  if (report.committed) return Format("%d of %s in %s.", report.executed, Counted(all, "statement"), time);
  if (!report.ended) return Format("Running statement %d of %d.", std::min(report.executed + 1, all), all);
  if (report.cancelled)
    return Format("Cancelled after %d of %s, %s.", report.executed, Counted(all, "statement"), time);
  if (!report.failed) return Format("Failed after %d of %s, %s.", report.executed, Counted(all, "statement"), time);
  return Format("Statement %d of %d failed after %s.", *report.failed + 1, all, time);
}

std::string ServerWords(const TStatementRun& run) {
  return run.error == 0 ? run.words : Format("Error %d: %s", run.error, run.words);
}

std::string StateWord(ERunState state) {
  constexpr const char* kWords[] = {"not run", "running", "done", "failed", "cancelled"};  // by ERunState
  return kWords[static_cast<std::size_t>(state)];
}

std::string DurationText(double seconds) {
  constexpr int kMinute = 60;
  if (seconds < 0.001) return "<1 ms";
  if (seconds < 1) return Format("%d ms", static_cast<int>(seconds * 1000));
  if (seconds < kMinute) return Format("%.1f s", seconds);
  const auto whole = static_cast<std::int64_t>(seconds);
  return Format("%d min %d s", whole / kMinute, whole % kMinute);
}

std::string ForceWord(const TRunReport& report, std::size_t statement) {
  if (!report.ended || report.runs[statement].state != ERunState::Done) return {};
  if (statement < report.InForce()) return "in force";
  return report.CommitUnknown() ? "not known" : "rolled back";
}

std::string RunText(const TRunReport& report, const std::string& script, const TStringList& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  text += "\n";
  TLineCounter counter(script);
  for (std::size_t i = 0; i < report.statements.size(); ++i)
    text += StatementText(report, i, counter.LineAt(report.statements[i].start));
  return text;
}

std::size_t TLineCounter::LineAt(std::size_t start) {
  for (; counted_ < std::min(start, text_.size()); ++counted_)
    if (text_[counted_] == '\n') ++line_;
  return line_;
}

std::string SuccessLine(TDBConn& target, const TRunReport& report) {
  return Format("%s ran on %s.", Counted(report.executed, "statement"), NameOf(target));
}

std::string ShownStatement(const std::string& statement) {
  const TStringList lines = LinesOf(statement);
  const std::string line = lines.empty() ? statement : Trim(lines.front());
  std::string shown = CutChars(line, kShownChars);
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }, '?');
  return shown.size() < line.size() ? shown + "..." : shown;
}

}  // namespace velmora
