// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/FleetSync.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <new>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

#include "app/OwnFolder.h"
#include "app/RunTelling.h"
#include "app/SideNames.h"
#include "cli/FleetText.h"
#include "cli/Interrupt.h"
#include "cli/SourceRun.h"
#include "mysqlclient/MyConnection.h"
#include "mysqltext/ScriptFolder.h"
#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNothingRun[] = "nothing was run";
constexpr char kSomeFailed[] = "nothing was run: %s could not be compared; --keep-going runs on the others";
constexpr char kAllowUnsafe[] = "%s: nothing was run; to run all of it, give --allow-unsafe";
constexpr char kGroupUnsafe[] = "unsafe: group %d: %s";
constexpr char kChangedSince[] = "It has changed since it was shown, and nothing was run on it. Run this again";
constexpr char kRowsOfTarget[] = "rows in the way: %s";
constexpr char kNotEqual[] = "Its script ran, and it is not identical: %s";
constexpr char kFleetStopped[] = "stopped";
constexpr char kSameName[] =
    "two targets go by the name of %s, and would share their files: give --journal and --undo to one of them at a time";
constexpr char kNoFolderMade[] = "Cannot make the folder %s: %s";
constexpr char kNotAFolder[] = "With --targets %s is a folder, with a file for each target: %s is none";

// An end that is not the target's own fault: nothing has run on it.
class EStopped : public EVelmora {
 public:
  EStopped() : EVelmora(kFleetStopped) {}
};

// A folder for its owner alone.
void MakeFolder(const std::string& option, const std::string& folder) {
  constexpr mode_t kOwnerAlone = 0700;
  if (mkdir(folder.c_str(), kOwnerAlone) == 0) return;
  if (errno != EEXIST) RaiseError(Format(kNoFolderMade, folder, std::strerror(errno)));
  if (!IsFolder(folder)) RaiseError(Format(kNotAFolder, option, folder));
}

std::string FileIn(const std::string& folder, const std::string& target, const char* ending) {
  return folder.empty() ? std::string() : JoinPath(folder, SafeFileName(target) + ending);
}

}  // namespace

// All connections on which statements run, for whoever breaks them off.
class TFleetSync::TRunning final : public TMyConnection {
 public:
  void Add(TMyConnection* connection) {
    Change([&] { running_.insert(connection); });
  }
  void Remove(TMyConnection* connection) {
    Change([&] { running_.erase(connection); });
  }

  bool GetConnected() const override { return true; }
  bool InTransaction() const override { return false; }
  void StartTransaction() override {}
  void Commit() override {}
  void Rollback() override {}
  std::unique_ptr<TMyQuery> NewQuery() override { RaiseAbstract(); }
  std::unique_ptr<TMyConnection> NewConnection() const override { RaiseAbstract(); }
  void CancelRunning() override {
    Change([this] {
      for (TMyConnection* connection : running_) connection->CancelRunning();
    });
  }
  void Sever() override {
    Change([this] {
      for (TMyConnection* connection : running_) connection->Sever();
    });
  }

 private:
  void DoConnect() override {}
  void DoDisconnect() override {}
  template <class Body>
  void Change(Body body) {
    const std::lock_guard lock(mutex_);
    body();
  }

  std::mutex mutex_;
  std::set<TMyConnection*> running_;
};

// Ends each target's work at its next pause once the run is to stop: by a failure elsewhere, or by a signal.
class TFleetSync::THost final : public velmora::THost {
 public:
  explicit THost(std::atomic<bool>& stop) : stop_(stop), signals_(&running) {}

  void ProcessMessages() override {
    try {
      signals_.ProcessMessages();
    } catch (const EVelmora&) {
      stop_ = true;
    }
    if (stop_) throw EStopped();
  }
  bool Cancelling() const override { return stop_ || signals_.Cancelling(); }

  TRunning running;

 private:
  std::atomic<bool>& stop_;
  TInterruptHost signals_;
};

// One target at its turn.
class TFleetSync::TTurn {
 public:
  TTurn(TFleetSync& sync, const TFleetTarget& target, const TFleetGroup& group)
      : sync_(sync),
        wishes_(sync.wishes_),
        target_(target),
        group_(group),
        console_{out_, err_, false, {}},
        pair_(sync.run_.fleet().PairWith(target)) {
    console_.secrets = sync.run_.console().secrets;
    console_.quiet = sync.run_.console().quiet;
  }

  // Gives whether its script ran; false for a target that is identical by now.
  bool Run() {
    OpenFiles();
    pair_->Compare();
    if (pair_->Identical()) return false;
    if (pair_->Findings().id != group_.findings.id) RaiseError(kChangedSince);
    script_ = pair_->editor().Text();
    CheckRows();
    TakeCare();
    RunScript();
    pair_->Compare();
    if (!pair_->app().Dialect().TablesIdentical())
      RaiseError(Format(kNotEqual, Counted(pair_->app().data.mtActions.Count(), "difference")));
    return true;
  }

  std::string Told() const { return err_.str(); }

 private:
  void OpenFiles() {
    const std::string journal = FileIn(wishes_.run.journal, target_.name, ".journal");
    undo_ = FileIn(wishes_.run.undo, target_.name, ".sql");
    if (!journal.empty()) {
      journal_ = std::make_unique<TJournal>(journal, SideName(pair_->Target()), SystemClock());
      if (const std::optional<TUnfinishedRun>& unfinished = journal_->Unfinished()) {
        TellUnfinished(*unfinished, console_);
        WaitForUnfinished(*unfinished, pair_->Target(), wishes_.run.care.lock_wait, console_);
      }
    }
    if (undo_.empty() || HasUndoIn(undo_, journal_ ? journal_->Unfinished() : std::nullopt)) return;
    undo_ = FreeFile(undo_);  // one that is there already is of a run before, and never written over
    CheckUndo(undo_);
  }

  void CheckRows() {
    const TStringList above = pair_->app().Dialect().AboveAlgorithm(script_);
    if (!above.empty()) RaiseError(JoinList(above, "; "));
    if (!wishes_.row_checks) return;
    TStringList in_the_way;
    for (const TRowFinding& finding : pair_->app().Dialect().CheckRows(wishes_.row_check_time))
      if (finding.checked)
        in_the_way.push_back(finding.text);
      else
        console_.Warn(finding.text);
    if (!in_the_way.empty()) RaiseError(Format(kRowsOfTarget, JoinList(in_the_way, "; ")));
  }

  void TakeCare() {
    TApplication& app = pair_->app();
    if (!undo_.empty()) way_back_ = WriteWayBack(undo_, journal_.get(), app.Dialect(), script_, console_);
    app.Care = wishes_.run.care;
    app.Care.tell = [this](const std::string& text) { console_.Note(text); };
    if (!journal_) return;
    app.WatchRuns([this](const TRunReport& report) { journal_->Told(report); });
  }

  void RunScript() {
    TApplication& app = pair_->app();
    auto* connection = dynamic_cast<TMyConnection*>(&pair_->Target().GetConnectionObject());
    connection->PrepareToCancel();
    sync_.host_->running.Add(connection);
    RunGuarded(
        [&] {
          try {
            app.RunScript(script_);
          } catch (const EVelmora& error) {
            if (app.RunReport().DidNothing() && dynamic_cast<const EStopped*>(&error) != nullptr) throw;
            RaiseError(JoinList(FailureLines(pair_->Target(), app.RunReport(), script_, error.what()), "\n"));
          }
        },
        [&] {
          sync_.host_->running.Remove(connection);
          if (way_back_.written && app.RunReport().DidNothing()) unlink(way_back_.file.c_str());
        });
  }

  TFleetSync& sync_;
  const TFleetSyncWishes& wishes_;
  const TFleetTarget& target_;
  const TFleetGroup& group_;
  std::ostringstream out_, err_;
  TConsole console_;
  std::unique_ptr<TFleetPair> pair_;
  std::unique_ptr<TJournal> journal_;
  std::string undo_, script_;
  TWayBack way_back_;
};

int TFleetSync::Execute() {
  if (!wishes_.run.journal.empty()) MakeFolder("--journal", wishes_.run.journal);
  if (!wishes_.run.undo.empty()) MakeFolder("--undo", wishes_.run.undo);
  run_.Compare();
  CheckNames();
  run_.TellGroups();
  if (MayRun()) RunGroups();
  TellNotBegun();
  run_.TellSummary();
  return Status();
}

// Servers that a host has beside each other, by a socket each, go by one name.
void TFleetSync::CheckNames() const {
  if (wishes_.run.journal.empty() && wishes_.run.undo.empty()) return;
  std::set<std::string> names;
  for (const TFleetTarget& target : run_.fleet().Targets())
    if (!names.insert(target.name).second) RaiseError(Format(kSameName, target.name));
}

void TFleetSync::TellNotBegun() {
  for (const TFleetGroup& group : run_.fleet().Groups())
    for (const std::size_t target : group.targets) {
      TFleetOutcome outcome = run_.fleet().Outcomes()[target];
      if (outcome.status != EFleetStatus::Different) continue;
      if (group.findings.statements > 0) outcome.status = EFleetStatus::NotBegun;
      run_.fleet().Tell(target, std::move(outcome));
    }
}

std::string TFleetSync::Summary() const {
  std::size_t statements = 0, targets = 0, groups = 0, unsafe = 0;
  for (const TFleetGroup& group : run_.fleet().Groups()) {
    if (group.findings.statements == 0) continue;
    ++groups;
    targets += group.targets.size();
    statements += group.findings.statements * group.targets.size();
    unsafe += group.findings.unsafe_lines.size();
  }
  const std::string run =
      Format("%s on %s in %s", Counted(statements, "statement"), Counted(targets, "target"), Counted(groups, "group"));
  return unsafe == 0 ? run : run + ", with " + Counted(unsafe, "unsafe change");
}

// Before anything runs: what could not be compared, what is unsafe, and what the user says.
bool TFleetSync::MayRun() {
  TConsole& console = run_.console();
  std::size_t failed = 0, unsafe = 0, number = 0, statements = 0;
  for (const TFleetOutcome& outcome : run_.fleet().Outcomes())
    failed += outcome.status != EFleetStatus::Identical && outcome.status != EFleetStatus::Different ? 1 : 0;
  for (const TFleetGroup& group : run_.fleet().Groups()) {
    ++number;
    statements += group.findings.statements;
    unsafe += group.findings.unsafe_lines.size();
    if (!wishes_.allow_unsafe)
      for (const std::string& line : group.findings.unsafe_lines) console.Error(Format(kGroupUnsafe, number, line));
  }
  if (statements == 0) return false;
  if (failed > 0 && !wishes_.fleet.keep_going) {
    console.Error(Format(kSomeFailed, Counted(failed, "target")));
    return false;
  }
  if (unsafe > 0 && !wishes_.allow_unsafe) {
    console.Error(Format(kAllowUnsafe, Summary()));
    return false;
  }
  if (wishes_.yes || console.Confirm("Run " + Summary() + "?")) return true;
  console.Error(kNothingRun);
  return false;
}

void TFleetSync::RunGroups() {
  THost host(stop_);
  const THostGuard guard(host);
  host_ = &host;
  for (const TFleetGroup& group : run_.fleet().Groups())
    if (group.findings.statements > 0) RunGroup(group);
  host_ = nullptr;
}

void TFleetSync::RunGroup(const TFleetGroup& group) {
  const std::size_t canaries = std::min(wishes_.fleet.canary, group.targets.size());
  const auto run = [&](const std::vector<std::size_t>& targets) {
    std::vector<std::size_t> lanes;
    lanes.reserve(targets.size());
    for (const std::size_t target : targets) lanes.push_back(run_.fleet().Targets()[target].lane);
    run_.lanes().Run(lanes, {[&](std::size_t piece) { RunOne(targets[piece], group); },
                             [&](std::size_t piece, const std::string& reason) { TellLost(targets[piece], reason); },
                             [this] { return stop_.load(); }});
  };
  for (std::size_t i = 0; i < canaries && !stop_; ++i) run({group.targets[i]});
  if (!stop_) run({group.targets.begin() + static_cast<std::ptrdiff_t>(canaries), group.targets.end()});
}

void TFleetSync::RunOne(std::size_t target, const TFleetGroup& group) {
  const auto begin = std::chrono::steady_clock::now();
  std::optional<TTurn> turn;
  TFleetOutcome outcome = run_.fleet().Outcomes()[target];
  try {
    turn.emplace(*this, run_.fleet().Targets()[target], group);
    outcome.status = turn->Run() ? EFleetStatus::Synced : EFleetStatus::Identical;
  } catch (const EUnreachable&) {
    throw;
  } catch (const EStopped&) {
    outcome.status = EFleetStatus::NotBegun;
  } catch (const EVelmora& error) {
    outcome.status = EFleetStatus::Failed;
    outcome.error = error.what();
  } catch (const std::bad_alloc&) {
    outcome.status = EFleetStatus::Failed;
    outcome.error = kOutOfMemory;
  }
  outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  if (outcome.status == EFleetStatus::Failed && !wishes_.fleet.keep_going) stop_ = true;
  run_.TellOf(target, turn ? turn->Told() : std::string(), outcome.error);
  run_.fleet().Tell(target, std::move(outcome));
}

void TFleetSync::TellLost(std::size_t target, const std::string& reason) {
  if (!wishes_.fleet.keep_going) stop_ = true;
  TFleetOutcome outcome = run_.fleet().Outcomes()[target];
  outcome.status = EFleetStatus::NotReached;
  outcome.error = reason;
  run_.TellOf(target, {}, reason);
  run_.fleet().Tell(target, std::move(outcome));
}

// What was to run and did not is a failure, and so are tables that no script changes.
int TFleetSync::Status() const {
  std::set<std::string> others;  // groups that differ in what is no table, and have no script
  for (const TFleetGroup& group : run_.fleet().Groups())
    if (group.findings.tables_identical && group.findings.statements == 0) others.insert(group.findings.id);
  const bool done = std::ranges::all_of(run_.fleet().Outcomes(), [&](const TFleetOutcome& outcome) {
    return outcome.status == EFleetStatus::Identical || outcome.status == EFleetStatus::Synced ||
           (outcome.status == EFleetStatus::Different && others.contains(outcome.group));
  });
  return done ? kExitSuccess : kExitFailure;
}

}  // namespace velmora
