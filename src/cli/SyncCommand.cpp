// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/SyncCommand.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <ostream>

#include "app/RunTelling.h"
#include "app/SideNames.h"
#include "cli/ComparisonText.h"
#include "cli/FleetSync.h"
#include "cli/Interrupt.h"
#include "cli/PairRun.h"
#include "cli/ReportOption.h"
#include "cli/SourceRun.h"
#include "exact/plan/ScriptSafety.h"
#include "mysqlclient/MyConnection.h"
#include "report/ReportFile.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kHowRunsEnd[] =
    "\nCtrl+C ends the run after the running statement, as SIGTERM and SIGHUP do; a second one breaks that statement "
    "off.\nEither way what the transaction still holds is rolled back, and the report says what is in force.\n";
constexpr int kLongestRowCheck = 86400;  // seconds
constexpr char kFits[] = "the target's server knows the language of --dialect %s";
constexpr char kRowsInTheWay[] = "nothing was run: change these rows or the reference%s";
constexpr char kUnlooked[] = "; --no-row-checks runs the script without looking at rows";
constexpr char kScriptGoesOn[] =
    "A run of a file does not go on by itself: compare anew, or take what has run out of the file and give another "
    "journal";
constexpr char kStillDiffer[] = "They still differ: see the output of the command, or compare again.";
constexpr char kTooMuch[] = "nothing was run: without --algorithm the server is left to choose";
constexpr char kRowsToBeAsked[] = "--fast-foreign-keys needs the row checks, which --no-row-checks leaves out";

constexpr char kNameNeeded[] =
    "The task asks for the database's name before a run, and there is no terminal to ask on: give --confirm-database "
    "NAME";
constexpr char kTypeName[] = "The script runs on %s. Type the name of this database to go on: ";
constexpr char kOtherName[] = "\"%s\" is not the name of the target, %s: nothing was run";

// `lines`: how it ended.
int RunOn(TPairRun& run, const std::string& script, TConsole& console, TStringList& lines) {
  TDBConn& target = *run.app().connections.target;
  try {
    TInterruptHost host(dynamic_cast<TMyConnection*>(&target.GetConnectionObject()));
    const THostGuard guard(host);
    run.app().RunScript(script);
  } catch (const EVelmora& error) {
    run.EndProgress();
    lines = FailureSummary(target, run.app().RunReport(), script, error.what());
    TStringList told = lines;
    ListInForce(run.app().RunReport(), told);
    for (const std::string& line : told) console.Error(line);
    return kExitFailure;
  }
  lines = {SuccessLine(target, run.app().RunReport())};
  console.out << lines.front() << '\n';
  return kExitSuccess;
}

// Whether no row that is there stands in the way of the script.
bool RowsAllow(TPairRun& run, int seconds, TConsole& console) {
  std::vector<TRowFinding> findings;
  if (run.CheckRows(seconds, findings)) return false;
  std::size_t in_the_way = 0;
  for (const TRowFinding& finding : findings) {
    if (finding.checked)
      console.Error("rows in the way: " + finding.text);
    else
      console.Warn(finding.text);
    if (finding.checked) ++in_the_way;
  }
  const bool may_be_left_out = !run.Exact().locks.fast_foreign_keys;
  if (in_the_way > 0) console.Error(Format(kRowsInTheWay, may_be_left_out ? kUnlooked : ""));
  return in_the_way == 0;
}

}  // namespace

void TSyncCommand::Declare(CLI::App& app) {
  app_ = &app;
  DeclarePair(app, pair_);
  DeclareFleet(app, pair_, fleet_);
  DeclareFleetSync(app, fleet_sync_);
  DeclareChoice(app, "--format", {"text", "json"}, "With --targets: text, or json: a line for each target as it ends",
                [this](std::size_t choice) { format_ = choice == 0 ? EFormat::Text : EFormat::Json; });
  app.get_option("--format")->needs(app.get_option("--targets"));
  app.add_flag("--yes", yes_, "Do not ask before the run; needed where there is no terminal to ask on");
  app.add_flag(
      "--allow-unsafe", allow_unsafe_,
      "Exact dialect: also run what may lose data, by comparison or of FILE; otherwise it is listed and nothing runs");
  app.add_option("--confirm-database", confirmed_,
                 "The name of the target's database: answers a task file that asks for it; another name runs nothing")
      ->type_name("NAME");
  DeclareAllowEmpty(app, pair_);
  DeclareScratch(app, pair_);
  app.add_flag(
      "--no-row-checks", no_row_checks_,
      "Exact dialect: do not ask the server before the run whether rows that are there stand in the way of new "
      "unique keys, foreign keys and columns that are to be not null");
  DeclareNumber(app, "--row-check-time", 0, kLongestRowCheck,
                "Let the server look at most N seconds for each of them; 0 waits for it (30)",
                [this](std::int64_t seconds) { row_check_time_ = static_cast<int>(seconds); });
  app.add_option_function<std::string>(
         "--script",
         [this](const std::string& file) {
           script_ = file;
           pair_.target_alone = true;
         },
         "Run the text of FILE, or with - of standard input, instead of comparing; REFERENCE may be left out")
      ->type_name("FILE")
      ->excludes(app.get_option("--verify-on-server"))
      ->excludes(app.get_option("--via-server"));
  DeclareExactOfRun(app, pair_.exact);
  DeclareRun(app, run_);
  CLI::Option* script = app.get_option("--script");
  app.get_option("--undo")->excludes(script);
  app.get_option("--map-collation")->excludes(script);
  DeclareReports(app, "what was found, and after the run what became of it,", reports_)->excludes(script);
  for (const TExactOption& option : ExactOptions())
    if (!option.of_run) app.get_option("--" + std::string(option.word))->excludes(script);
  options_.DeclarePair(app);
  app.footer(kHowRunsEnd + app.get_footer());
}

// Before anything is compared: whether the name can be had at all, and the one that was given fits.
void TSyncCommand::CheckDatabaseName(const TTaskMarks& marks, TDBConn& target, const TConsole& console) const {
  if (marks.confirm_database && !confirmed_ && !console.CanAsk()) RaiseError(kNameNeeded);
  if (confirmed_ && *confirmed_ != DatabaseName(target)) RaiseError(Format(kOtherName, *confirmed_, SideName(target)));
}

bool TSyncCommand::DatabaseConfirmed(TPairRun& run, TConsole& console) const {
  if (!run.Marks().confirm_database || confirmed_) return true;
  TDBConn& target = *run.app().connections.target;
  std::string typed;
  try {
    typed = console.ask(Format(kTypeName, ShownText(SideName(target))), false);
  } catch (const EAbort&) {  // the end of the input names nothing
    console.err << '\n';
  }
  if (typed == DatabaseName(target)) return true;
  console.Error(Format(kOtherName, typed, SideName(target)));
  return false;
}

// Compares and makes the script; false where there is nothing to run, with the exit status.
bool TSyncCommand::Prepare(TPairRun& run, TConsole& console, int& status) {
  status = kExitFailure;
  if (run.Compare(pair_, options_, true)) return false;
  const bool nothing_to_do = run.app().data.mtActions.Empty();
  if (!nothing_to_do && run.GenerateScript()) return false;
  if (TReport report; !reports_.empty()) {
    if (run.GatherReport(report)) return false;
    report_ = std::move(report);
  }
  if (nothing_to_do) {
    PrintComparison(run.app(), false, console.out, console.out_colours);
    status = run.app().Dialect().TablesIdentical() ? kExitSuccess : kExitFailure;
    return false;
  }
  return true;
}

// What a run has reached, where a new comparison can tell.
int TSyncCommand::TellResult(TPairRun& run, TConsole& console) {
  if (const std::optional<std::string> error = run.CompareAgain()) {
    if (report_) report_->run->SetVerdict(false, *error);
    return kExitFailure;
  }
  PrintComparison(run.app(), false, console.out, console.out_colours);
  const bool identical = run.app().Dialect().Identical();
  if (report_) report_->run->SetVerdict(identical, identical ? kIdentical : kStillDiffer);
  return run.app().Dialect().TablesIdentical() ? kExitSuccess : kExitFailure;
}

// What is unsafe is asked of the text that will run, wherever it comes from. `script` loses what the server refuses.
bool TSyncCommand::MayRun(TPairRun& run, std::string& script, TConsole& console) {
  TApplication& app = run.app();
  const auto plan_of = [&](const std::string& text) {
    return TScriptPlan{text, SideName(*app.connections.target), app.Dialect().Statements(text).statements.size(),
                       app.Dialect().UnsafeStatements(text), script_.empty()};
  };
  TScriptPlan plan = plan_of(script);
  if (script_.empty() && no_row_checks_ && run.Exact().locks.fast_foreign_keys) RaiseError(kRowsToBeAsked);
  const TStringList above = app.Dialect().AboveAlgorithm(script);
  for (const std::string& line : above) console.Error(line);
  if (!above.empty()) console.Error(kTooMuch);
  if (!above.empty() || !UnsafeAllowed(plan, allow_unsafe_, console)) return false;
  if (script_.empty() && !no_row_checks_ && !RowsAllow(run, row_check_time_, console)) return false;
  std::optional<int> left;
  if (pair_.verify_on_server && (run.VerifyOnServer(left) || *left > 0 || run.GenerateScript())) return false;
  if (pair_.verify_on_server) plan = plan_of(script = run.editor().Text());  // without what the server refuses
  if (yes_) return DatabaseConfirmed(run, console);
  ShowPlan(app, plan, console.err, console.err_colours);
  if (console.Confirm("Run " + plan.Summary() + "?")) return DatabaseConfirmed(run, console);
  console.Error("nothing was run");
  return false;
}

// Before anything is compared: what the run before has left under way is to be over, and the way back has a place.
void TSyncCommand::OpenFiles(TDBConn& target, TConsole& console) {
  if (!run_.journal.empty()) OpenJournal(target, console);
  const std::optional<TUnfinishedRun> before = journal_ ? journal_->Unfinished() : std::nullopt;
  if (!run_.undo.empty() && !HasUndoIn(run_.undo, before)) CheckUndo(run_.undo);
}

void TSyncCommand::OpenJournal(TDBConn& target, TConsole& console) {
  journal_ = std::make_unique<TJournal>(run_.journal, SideName(target), SystemClock());
  const std::optional<TUnfinishedRun>& unfinished = journal_->Unfinished();
  if (!unfinished) return;
  TellUnfinished(*unfinished, console);
  if (!script_.empty()) RaiseError(kScriptGoesOn);
  WaitForUnfinished(*unfinished, target, run_.care.lock_wait, console);
}

// What stands around a run that is about to begin.
void TSyncCommand::TakeCare(TPairRun& run, const std::string& script, TConsole& console) {
  if (!run_.undo.empty()) way_back_ = WriteWayBack(run_.undo, journal_.get(), run.app().Dialect(), script, console);
  run_.care.tell = [&](const std::string& text) {
    run.EndProgress();
    console.Note(text);
  };
  if (journal_) {
    run_.care.tool_runs = [this](int process, const std::string& program, const std::string& login) {
      journal_->ToolRuns(process, program, login);
    };
    run.app().WatchRuns([this](const TRunReport& report) { journal_->Told(report); });
  }
  run.app().Care = run_.care;
}

int TSyncCommand::SyncMany(TConsole& console) {
  CheckFleet(pair_, *app_);
  if (no_row_checks_ && pair_.exact.locks.fast_foreign_keys) RaiseError(kRowsToBeAsked);
  TFleetSyncWishes wishes{fleet_sync_, yes_, allow_unsafe_, !no_row_checks_, row_check_time_, run_};
  wishes.run.care = WithWishes(run_.care, pair_.exact.waits);
  TFleetRun run(pair_, options_, fleet_, EFleetUse::Sync, format_, console);
  return TFleetSync(run, std::move(wishes)).Execute();
}

int TSyncCommand::Execute(TConsole& console) {
  if (!yes_ && !console.CanAsk())
    RaiseError("There is no terminal to ask on: give --yes to run the script without a question");
  if (!pair_.targets.empty()) return SyncMany(console);
  CheckFilesApart({{"--script", script_}, {"--journal", run_.journal}, {"--undo", run_.undo}}, reports_);
  TPairRun run(console, SystemClock());
  run.OnMade = [&](TDBConn& target) {
    run_.care = WithWishes(run_.care, run.Exact().waits);
    CheckDatabaseName(run.Marks(), target, console);
    OpenFiles(target, console);
  };
  const int status = Sync(run, console);
  if (!report_) return status;
  if (!report_->run && !report_->parts.empty()) report_->run = RunPartOf({}, {});
  for (const std::string& file : reports_) WriteReport(*report_, file);
  return status;
}

int TSyncCommand::Sync(TPairRun& run, TConsole& console) {
  int status = kExitSuccess;
  if (!script_.empty()) {
    run.editor().SetText(ReadTextFile(script_));
    run.OpenTarget(pair_, options_);
    if (!run_.allow_moved && run.app().Dialect().Traits().tells_result)
      CheckStructure(run.editor().Text(), *run.app().connections.target);
  } else if (!Prepare(run, console, status)) {
    return status;
  }
  CheckCare(run_, pair_.exact, run.app().Dialect().Traits());
  std::string script = run.editor().Text();
  if (!MayRun(run, script, console)) return kExitFailure;
  if (report_) report_->script = WithPlainLineEnds(script);
  TakeCare(run, script, console);
  TStringList ended;
  status = RunOn(run, script, console, ended);
  if (report_) report_->run = RunPartOf(run.app().RunReport(), ended);
  if (way_back_.written && run.app().RunReport().DidNothing()) unlink(way_back_.file.c_str());
  const TDialectRow* fits = script_.empty() ? run.app().DialectThatFits() : nullptr;
  if (fits != nullptr) console.Note(Format(kFits, fits->word));
  const bool can_tell = run.app().Dialect().Traits().tells_result && script_.empty() && status == kExitSuccess;
  return can_tell ? TellResult(run, console) : status;
}

}  // namespace velmora
