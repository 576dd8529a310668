// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/RunOptions.h"

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <thread>

#include "app/CopyTool.h"
#include "app/Dialects.h"
#include "app/RunTelling.h"
#include "app/SideNames.h"
#include "cli/Command.h"
#include "exact/plan/ScriptSafety.h"
#include "exact/run/StructureDigest.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr auto kPoll = std::chrono::milliseconds(500);
constexpr std::size_t kComparedBytes = 200;  // of a statement; servers may show no more

constexpr char kTold[] = "the run of %s did not come to its end: %d of %s were done%s";
constexpr char kUnderWay[] = "statement %d was under way: %s";
constexpr char kWaits[] = "connection %s still runs it: waiting %s";
constexpr char kRuns[] =
    "Statement %d of the run before is still under way on the target, as connection %s: %s. Wait for its end, or end "
    "that connection, and run this again";
constexpr char kToolRuns[] =
    "The tool that the run before started for statement %d is still at work, as process %d. Wait for its end, or end "
    "it, and run this again";
constexpr char kThere[] = "%s is there already: give the way back another file";
constexpr char kKept[] = "%s stays as it is: it leads back to what was before the run that goes on here";
constexpr char kTwoWays[] =
    "the reference is no longer what the run before had: %s leads back from an end that is not reached, and %s, which "
    "is "
    "written now, to what the target is before this run: to come back to what was before both, look at both";
constexpr char kCannotWrite[] = "Cannot write %s: %s";
constexpr char kOther[] =
    "The script was made for another structure than the target has now, and nothing was run: compare anew, or give "
    "--allow-moved";

std::int64_t ReadSize(const std::string& text) {
  constexpr std::string_view kUnits = "KMGT";
  std::string digits = text;
  std::int64_t unit = 1;
  if (!digits.empty())
    if (const std::size_t place = kUnits.find(static_cast<char>(std::toupper(digits.back())));
        place != std::string_view::npos) {
      unit = std::int64_t{1} << (10 * (place + 1));
      digits.pop_back();
    }
  const std::optional<std::int64_t> number = TryStrToInt(digits);
  if (!number || *number < 0 || *number > std::numeric_limits<std::int64_t>::max() / unit)
    throw CLI::ValidationError("--osc-min-size", "\"" + text + "\" is no size, as in 500M or 2G");
  return *number * unit;
}

void DeclareFile(CLI::App& app, const std::string& name, std::string& file, const std::string& help) {
  app.add_option(name, file, help)->type_name("FILE")->check([](const std::string& given) {
    return given.empty() ? std::string("an empty name is no file") : std::string();
  });
}

// The connection that runs it; nothing where none does.
std::optional<std::string> ConnectionThatRuns(const std::string& statement, TDBConn& target) {
  const std::string wanted = WithPlainLineEnds(statement).substr(0, kComparedBytes);
  const std::unique_ptr<TDataset> rows = target.OpenQuery("show full processlist");
  const std::string database = DatabaseName(target);
  constexpr std::size_t kDatabase = 3;
  constexpr std::size_t kInfo = 7;
  for (; !rows->Eof(); rows->Next())
    if (VarToText(rows->Value(kDatabase)) == database &&
        WithPlainLineEnds(VarToText(rows->Value(kInfo))).starts_with(wanted))
      return VarToText(rows->Value(0));
  return std::nullopt;
}

// Numbers of processes are given anew: what has this one has to be of that program.
bool ToolRuns(const TUnfinishedRun::TUnderWay& statement) {
  if (statement.process == 0) return false;
  try {
    const std::string words = ReadFileText(Format("/proc/%d/cmdline", statement.process));
    return words.find(statement.program) != std::string::npos;
  } catch (const EVelmora&) {  // there is none
    return false;
  }
}

// The login of a tool that is over: a run that was killed beside it could not take its file away.
void RemoveLogin(const std::string& file) {
  const std::string name = file.substr(file.rfind('/') + 1);
  if (name.starts_with(kLoginFileStart)) unlink(file.c_str());
}

// For so many seconds; 0: for as long as it takes.
void WaitForStatement(const TUnfinishedRun::TUnderWay& statement, TDBConn& target, int seconds, TConsole& console) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  for (bool told = false;; std::this_thread::sleep_for(kPoll)) {
    const std::optional<std::string> connection = ConnectionThatRuns(statement.text, target);
    if (!connection) return;
    if (seconds > 0 && std::chrono::steady_clock::now() >= end)
      RaiseError(Format(kRuns, statement.number, *connection, ShownStatement(statement.text)));
    const std::string how_long =
        seconds == 0 ? "for its end" : "for at most " + Counted(static_cast<std::size_t>(seconds), "second");
    if (!told) console.Note(Format(kWaits, *connection, how_long));
    told = true;
  }
}

// A run that was killed may have left it empty.
bool IsWayBack(const std::string& path) {
  try {
    const std::string beginning = ReadFileBytes(path, 2);
    return beginning.empty() || beginning == "--";
  } catch (const EVelmora&) {  // it is not there
    return false;
  }
}

// The digest of the structure that the script leads to; empty where its header does not tell.
std::string EndOf(const std::string& script) {
  const std::optional<TStructureDigest> digest = DigestIn(script, kReferenceSide);
  return digest ? digest->Text() : std::string();
}

// Where the way back goes.
struct TUndoPlace {
  std::string file{};
  bool kept = false;      // it is there, and leads back to what was before the unfinished run that goes on
  bool replaces = false;  // it may be there, of an unfinished run that has changed nothing
};

TUndoPlace PlaceOfUndo(const std::string& path, const std::optional<TUnfinishedRun>& before, const std::string& end,
                       TConsole& console) {
  if (!HasUndoIn(path, before)) return {path};
  if (!before->changed) return {.file = before->undo, .replaces = true};
  if (before->end.empty() || end.empty() || before->end == end) return {.file = before->undo, .kept = true};
  const std::string file = FreeFile(path);
  console.Warn(Format(kTwoWays, before->undo, file));
  return {file};
}

// Whether the file was written.
bool WriteUndo(const TUndoPlace& place, const std::string& script, TConsole& console) {
  constexpr mode_t kForOwner = 0600;
  const std::string& path = place.file;
  if (place.replaces && IsWayBack(path)) unlink(path.c_str());
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kForOwner);
  if (file < 0 && errno == EEXIST && place.kept) {
    console.Note(Format(kKept, path));
    return false;
  }
  if (file < 0) RaiseError(errno == EEXIST ? Format(kThere, path) : Format(kCannotWrite, path, std::strerror(errno)));
  close(file);
  try {
    WriteFileText(path, script, false, kForOwner);
  } catch (const EVelmora&) {
    unlink(path.c_str());
    throw;
  }
  return true;
}

}  // namespace

void DeclareRun(CLI::App& app, TRunOptions& options) {
  DeclareFile(
      app, "--journal", options.journal,
      "Keep a journal of the run in FILE, by which a run goes on that was ended in its middle; with --targets a "
      "folder, with a file for each target");
  DeclareFile(app, "--undo", options.undo,
              "Exact dialect: write the script that leads back to FILE, which must be new, before anything runs; with "
              "--targets a folder");
  app.add_flag("--allow-moved", options.allow_moved,
               "Run the script of --script on a target that has another structure than its header says");
  app.add_option("--osc", options.care.copy_tool.command,
                 "Exact dialect: hand changes of large tables to this command, in which {DATABASE}, {TABLE}, "
                 "{CLAUSES} and {DEFAULTS}, a file with the login, are filled in")
      ->type_name("COMMAND")
      ->check([](const std::string& command) { return FaultOfCopyTool(command); });
  app.add_option_function<std::string>(
         "--osc-min-size", [&options](const std::string& size) { options.care.copy_tool.least_size = ReadSize(size); },
         "The size from which on a table with its keys is large: bytes, or with K, M or G (0)")
      ->type_name("SIZE")
      ->needs(app.get_option("--osc"));
}

void CheckCare(const TRunOptions& options, const TExactWishes& wishes, const TDialectTraits& dialect) {
  std::string asked;
  for (const TExactOption& option : ExactOptions())
    if (option.of_run && !option.given(wishes).empty()) asked = option.word;
  if (!options.care.copy_tool.command.empty()) asked = "osc";
  if (!options.undo.empty()) asked = "undo";
  if (!dialect.takes_care && !asked.empty()) RaiseExactAlone(asked);
}

void TellUnfinished(const TUnfinishedRun& run, TConsole& console) {
  console.Note(Format(kTold, run.begun, run.done, Counted(run.all, "statement"),
                      run.error.empty() ? "" : "; it ended with: " + run.error));
  if (run.under_way) console.Note(Format(kUnderWay, run.under_way->number, ShownStatement(run.under_way->text)));
}

void WaitForUnfinished(const TUnfinishedRun& run, TDBConn& target, int seconds, TConsole& console) {
  if (!run.under_way) return;
  if (ToolRuns(*run.under_way)) RaiseError(Format(kToolRuns, run.under_way->number, run.under_way->process));
  RemoveLogin(run.under_way->login);
  target.Connect();
  WaitForStatement(*run.under_way, target, seconds, console);
}

void CheckUndo(const std::string& path) {
  if (access(path.c_str(), F_OK) == 0) RaiseError(Format(kThere, path));
  const std::size_t name = path.rfind('/');
  const std::string folder = name == std::string::npos ? "." : path.substr(0, name + 1);
  if (access(folder.c_str(), W_OK) != 0) RaiseError(Format(kCannotWrite, path, std::strerror(errno)));
}

std::string FreeFile(const std::string& path) {
  const std::filesystem::path given(path);
  std::string file = path;
  for (int number = 2; access(file.c_str(), F_OK) == 0; ++number)
    file = (given.parent_path() / given.stem()).string() + Format(".%d", number) + given.extension().string();
  return file;
}

bool HasUndoIn(const std::string& path, const std::optional<TUnfinishedRun>& before) {
  if (path.empty() || !before || before->undo.empty()) return false;
  const std::filesystem::path given(path), had(before->undo);
  if (before->undo == path) return true;
  const std::filesystem::path numbered = had.stem();
  const bool number = TryStrToInt(numbered.extension().string().substr(numbered.has_extension() ? 1 : 0)).has_value();
  return number && had.parent_path() == given.parent_path() && had.extension() == given.extension() &&
         numbered.stem() == given.stem();
}

TWayBack WriteWayBack(const std::string& path, TJournal* journal, TDialect& dialect, const std::string& script,
                      TConsole& console) {
  const std::string end = EndOf(script);
  const TUndoPlace place = PlaceOfUndo(path, journal == nullptr ? std::nullopt : journal->Unfinished(), end, console);
  if (journal != nullptr) {
    journal->Undo = place.file;
    journal->End = end;
    journal->Begin(dialect.Statements(script).statements.size());
  }
  return {place.file, WriteUndo(place, dialect.UndoScript(), console)};
}

void CheckStructure(const std::string& script, TDBConn& target) {
  const std::optional<TStructureDigest> made_for = DigestIn(script, kTargetSide);
  if (!made_for) return;
  std::optional<TStructureDigest> now = DigestNow(target);
  if (!now) return;
  if (made_for->others.empty()) now->others.clear();
  if (*now != *made_for) RaiseError(kOther);
}

}  // namespace velmora
