#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>

#include "app/FaultHints.h"
#include "cli/Commands.h"
#include "cli/ComparisonText.h"
#include "cli/Interrupt.h"
#include "cli/PairRun.h"
#include "cli/SourceRun.h"
#include "engines/mysql/MyConnection.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kEnding[] =
    "\nCtrl+C ends the run behind the running statement, as SIGTERM and SIGHUP do; a second one breaks that statement "
    "off.\nEither way what the transaction still holds is rolled back, and the report says what is in force.\n";
constexpr std::size_t kListedStatements = 20;
constexpr std::size_t kShownChars = 120;

std::string FirstLine(const std::string& statement) {
  const TStringList lines = LinesOf(statement);
  const std::string line = lines.empty() ? statement : Trim(lines.front());
  std::string shown = CutChars(line, kShownChars);
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }, '?');
  return shown.size() < line.size() ? shown + "..." : shown;
}

// "line 3, column 1" of a place in the script, counting characters from 1.
std::string PlaceIn(const std::string& script, std::size_t start) {
  const std::string_view before = std::string_view(script).substr(0, start);
  const std::size_t line_start = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  return Format("line %d, column %d", line, CharCount(before.substr(line_start)) + 1);
}

// What is in force of a run that did not reach its end.
void TellWhatIsInForce(const TRunReport& report, TConsole& console) {
  const std::size_t count = report.InForce();
  const std::string ran = Format("%d of %d statements ran before it", report.executed, report.statements.size());
  const bool unknown = report.CommitUnknown();
  if (report.executed == 0) {
    console.Error(report.lost ? "no statement ran before it" : "no statement ran before it: the target is as it was");
    return;
  }
  if (count == 0) {
    console.Error(ran + (unknown ? ", and whether they are in force is not known"
                                 : " and were rolled back; tables without transactions keep what was done to them"));
    return;
  }
  if (count < report.executed)
    console.Error(ran + Format("; the first %d are in force, ", count) +
                  (unknown ? "and whether the others are is not known" : "the others were rolled back"));
  else
    console.Error(ran + " and are in force: the server commits each change of structure at once, with all around it");
  const std::size_t from = count > kListedStatements ? count - kListedStatements : 0;
  if (from > 0) console.Error(Format("  (the first %d are not listed)", from));
  for (std::size_t i = from; i < count; ++i)
    console.Error(Format("  %d: %s", i + 1, FirstLine(report.statements[i].text)));
}

// Nothing is open where the connection was lost with nothing under way.
std::string WhatLossLeavesOpen(const TRunReport& report, const std::string& hint) {
  if (!hint.empty()) return ": " + hint;
  if (report.failed) return ": whether that statement took effect is not known";
  return report.committing ? ": whether the commit took effect is not known" : "";
}

void TellFailure(const TRunReport& report, const std::string& script, const std::string& error, const std::string& hint,
                 TConsole& console) {
  if (report.failed) {
    const TScriptStatement& statement = report.statements[*report.failed];
    console.Error(Format("statement %d of %d failed at %s: %s", *report.failed + 1, report.statements.size(),
                         PlaceIn(script, statement.start), FirstLine(statement.text)));
  }
  console.Error(error);
  if (report.lost) console.Error("the connection is lost" + WhatLossLeavesOpen(report, hint));
  TellWhatIsInForce(report, console);
}

int RunOn(TPairRun& run, const std::string& script, TConsole& console) {
  TDBConn& target = *run.app().connections.target;
  try {
    TInterruptHost host(dynamic_cast<TMyConnection*>(&target.GetConnectionObject()));
    const THostGuard guard(host);
    run.app().RunScript(script);
  } catch (const EVelmora& error) {
    run.EndProgress();
    const TRunReport& report = run.app().RunReport();
    TellFailure(report, script, error.what(), PacketHint(target, report), console);
    return kExitFailure;
  }
  std::string name;
  target.GetDisplayName(name);
  console.out << Format("%s ran on %s.\n", Counted(run.app().RunReport().executed, "statement"), name);
  return kExitSuccess;
}

// What a run has reached, where a new comparison can tell.
int TellResult(TPairRun& run, TConsole& console) {
  if (run.CompareAgain()) return kExitFailure;
  PrintComparison(run.app(), false, console.out);
  return run.app().Identical() ? kExitSuccess : kExitFailure;
}

}  // namespace

void TSyncCommand::Declare(CLI::App& app) {
  DeclarePair(app, pair_);
  app.add_flag("--yes", yes_, "Do not ask before the run; needed where there is no terminal to ask on");
  app.add_flag("--allow-unsafe", allow_unsafe_,
               "Exact dialect: also run what may lose data; otherwise that is listed and nothing runs");
  DeclareVerify(app, pair_);
  app.add_option("--script", script_, "Run the text of FILE instead of comparing")
      ->type_name("FILE")
      ->excludes(app.get_option("--verify-on-server"));
  options_.DeclarePair(app);
  app.footer(kEnding + app.get_footer());
}

// Compares and makes the script; false where there is nothing to run, with the exit status.
bool TSyncCommand::Prepare(TPairRun& run, TConsole& console, int& status) {
  status = kExitFailure;
  if (run.Compare(pair_, options_, true)) return false;
  if (run.app().data.mtActions.Empty()) {
    PrintComparison(run.app(), false, console.out);
    status = run.app().Identical() ? kExitSuccess : kExitFailure;
    return false;
  }
  if (!UnsafeActionsAllowed(run.app(), allow_unsafe_, console)) return false;
  std::optional<int> left;
  if (pair_.verify_on_server && (run.VerifyOnServer(left) || *left > 0)) return false;
  return !run.GenerateScript();
}

int TSyncCommand::Execute(TConsole& console) {
  if (!yes_ && !console.CanAsk())
    RaiseError("There is no terminal to ask on: give --yes to run the script without a question");
  TPairRun run(console, SystemClock());
  int status = kExitSuccess;
  if (!script_.empty()) {
    run.editor().SetText(ReadTextFile(script_));
    run.OpenTarget(pair_, options_);
  } else if (!Prepare(run, console, status)) {
    return status;
  }
  const std::string script = run.editor().Text();
  const std::size_t count = run.app().Statements(script).statements.size();
  std::string name;
  run.app().connections.target->GetDisplayName(name);
  if (!yes_ && !console.Confirm(Format("Run %s on %s?", Counted(count, "statement"), name))) {
    console.Error("nothing was run");
    return kExitFailure;
  }
  status = RunOn(run, script, console);
  const bool can_tell = run.app().dialect == EDialect::Exact && script_.empty() && status == kExitSuccess;
  return can_tell ? TellResult(run, console) : status;
}

}  // namespace velmora
