// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/PairRun.h"

#include <new>

#include "app/FaultPlace.h"
#include "app/ServerReference.h"
#include "app/SideNames.h"
#include "app/Sources.h"
#include "app/Tasks.h"
#include "cli/ComparisonText.h"
#include "cli/FailOnOptions.h"
#include "cli/Interrupt.h"
#include "cli/SourceRun.h"
#include "cli/TerminalProgress.h"
#include "engines/mysql/OfflineEngine.h"
#include "foreign/FactReaders.h"
#include "mysqlclient/MyConnection.h"
#include "report/ComparisonReport.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kReads[] = "--dialect %s reads this table";
constexpr char kFileAndServer[] = "--via-server takes a reference that ends in .sql and a target on a server";

constexpr char kForeignAlone[] =
    "--map, --whole-numbers, --collation, --names, --accept, --strict-types, --accept-timestamp and --drop-obsolete "
    "are for references that are not MySQL";

constexpr int kGrace = 3000;  // milliseconds

bool IsFile(TDBConn& conn) { return dynamic_cast<TDBConnMySQLOffline*>(&conn) != nullptr; }

}  // namespace

std::unique_ptr<TProgress> MakeProgress(TConsole& console) {
  if (console.err_is_terminal && !console.quiet) return std::make_unique<TTerminalProgress>(console.err);
  return std::make_unique<TNoProgress>();
}

TPairRun::TPairRun(TConsole& console, const TClock& clock)
    : console_(console),
      clock_(clock),
      progress_(MakeProgress(console)),
      log_(clock, *progress_),
      app_(*progress_, editor_, log_, clock) {}

std::optional<std::string> TPairRun::Compare(const TPair& pair, const TSourceOptions& options, bool for_script) {
  return Reported([&] {
    Open(pair, options, for_script);
    compared_ = app_.Compare();
    TellWarnings(*app_.connections.reference, console_);
    LookAtReference(pair, for_script);
    const std::string refusal = app_.Dialect().Refusal();
    if (for_script && !refusal.empty()) RaiseError(refusal);
    TellRemarks(app_, compared_.get(), console_);
  });
}

void TPairRun::LookAtReference(const TPair& pair, bool for_script) {
  if (!app_.Dialect().ReferenceIsEmpty()) return;
  const std::string text = EmptyReferenceText(*app_.connections.reference);
  if (for_script && !pair.allow_empty_reference) RaiseError(text + kAllowEmpty);
  console_.Warn(text, EWeight::Decides);
}

std::optional<std::string> TPairRun::CompareAgain() {
  return Reported([this] { compared_ = app_.Compare(); });
}

std::optional<std::string> TPairRun::VerifyOnServer(std::optional<int>& left) {
  return Reported([&] {
    const std::size_t told_before = app_.Dialect().Findings().objects.size();
    WithScratch([&](const TScratchPorts& ports) { left = app_.Dialect().VerifyOnServer(ports); });
    const std::vector<TObjectDifference> objects = app_.Dialect().Findings().objects;
    for (std::size_t i = told_before; i < objects.size(); ++i)
      console_.Warn(Format("%s %s: %s", objects[i].kind, objects[i].name, objects[i].difference), EWeight::Decides);
    const std::string told =
        TellLeft("verified on the server", "not verified on the server", app_.Dialect().Findings(), *left);
    if (*left == 0)
      console_.Note(told);
    else
      console_.Error(told);
  });
}

std::optional<std::string> TPairRun::CheckRows(int seconds, std::vector<TRowFinding>& findings) {
  return Reported([&] { findings = app_.Dialect().CheckRows(seconds); });
}

std::optional<std::string> TPairRun::LookForFailures(const TFailOnWishes& wishes) {
  return Reported([&] {
    failures_ = FailuresOf(app_, wishes, exact_);
    TellFailures(failures_, console_);
  });
}

std::optional<std::string> TPairRun::GatherReport(TReport& report) {
  return Reported([&] {
    report = CollectReport(app_, editor_.Text(), clock_);
    for (const TFailure& failure : failures_) report.failures.push_back(failure.Line());
  });
}

void TPairRun::WithScratch(const std::function<void(const TScratchPorts& ports)>& work) {
  TInterruptHost host(nullptr, kGrace, TInterruptHost::EToldToEnd::BreakOff);
  const THostGuard guard(host);
  TScratchPorts ports;
  ports.warn = [this](const std::string& text) { console_.Warn(text); };
  ports.runs_on = [&host](TDBConn* conn) {
    host.RunsOn(conn == nullptr ? nullptr : dynamic_cast<TMyConnection*>(&conn->GetConnectionObject()));
  };
  work(ports);
}

void TPairRun::ReadReferenceOnServer() {
  auto& file = dynamic_cast<TDBConnMySQLOffline&>(*app_.connections.reference);
  std::unique_ptr<TDBConn> reference;
  WithScratch([&](const TScratchPorts& ports) {
    reference = ReferenceByServer(file, *app_.connections.target, *progress_, ports);
  });
  app_.connections.reference = std::move(reference);
}

void TPairRun::HangUp() {
  const auto close = [](const std::unique_ptr<TDBConn>& conn) {
    try {
      if (conn && conn->GetConnected()) conn->GetConnectionObject().SetConnected(false);
    } catch (const EVelmora&) {  // what has no connection object has nobody to take leave of
    }
  };
  close(app_.connections.reference);
  close(app_.connections.target);
  close(compared_);
}

std::optional<std::string> TPairRun::GenerateScript() {
  return Reported([this] { app_.Dialect().GenerateScript(); });
}

TTaskConnections TPairRun::Make(const TPair& pair, const TSourceOptions& options) {
  if (pair.dialect) app_.Choose(*pair.dialect);
  foreign_ = pair.foreign;
  exact_ = pair.exact;
  if (IsTaskFile(pair.reference)) {
    TMadeTask task = MakeTask(pair.reference, AskingWithoutBar(options.ForTaskReference(console_)),
                              AskingWithoutBar(options.ForTaskTarget(console_)));
    if (!pair.dialect) app_.Choose(task.dialect);
    marks_ = task.marks;
    foreign_ = JoinWishes(pair.foreign, task.foreign);
    exact_ = JoinWishes(pair.exact, task.exact);
    SettleSocket({task.connections.reference.get(), task.connections.target.get()}, true);
    return std::move(task.connections);
  }
  TTaskConnections connections;
  connections.reference = MakeSource(pair.reference, options.ForReference(console_));
  connections.target = MakeTarget(pair.target, options.ForTarget(console_));
  SettleSocket({connections.reference.get(), connections.target.get()});
  return connections;
}

// A password may be asked for in the middle of the work.
TSourceSettings TPairRun::AskingWithoutBar(TSourceSettings settings) {
  if (settings.PasswordRefused)
    settings.PasswordRefused = [this, ask = settings.PasswordRefused](const std::string& account) {
      progress_->Finish();
      return ask(account);
    };
  return settings;
}

void TPairRun::Open(const TPair& pair, const TSourceOptions& options, bool for_script) {
  TTaskConnections connections = Make(pair, options);
  if (OnMade) OnMade(*connections.target);
  CheckComparable(*connections.reference, app_.Dialect().Traits().maps_foreign);
  if (foreign_.Any() && !HasFactReader(*connections.reference)) RaiseError(kForeignAlone);
  app_.Take({pair.collations, pair.verify_on_server, pair.via_server, foreign_, options.verbose(), exact_});
  if (pair.via_server && (!IsFile(*connections.reference) || IsFile(*connections.target))) RaiseError(kFileAndServer);
  const TDialectTraits& dialect = app_.Dialect().Traits();
  // A server that is only compared need not be asked for its tables more often than the comparison does.
  const bool enough = !for_script || dialect.connects_target;
  if (enough && !IsFile(*connections.reference) && !IsFile(*connections.target)) {
    app_.TakeTask(std::move(connections));
    return;
  }
  app_.OpenTask(std::move(connections.reference), std::move(connections.target));
  app_.Settle();
  if (pair.via_server)
    ReadReferenceOnServer();
  else
    WarnOfSource(*app_.connections.reference, options.verbose(), console_, app_.Dialect().Traits().applies_statements);
  WarnOfSource(*app_.connections.target, options.verbose(), console_, app_.Dialect().Traits().applies_statements);
}

void TPairRun::OpenTarget(const TPair& pair, const TSourceOptions& options) {
  if (pair.dialect) app_.Choose(*pair.dialect);
  exact_ = pair.exact;
  const bool is_task = IsTaskFile(pair.reference);
  app_.connections.target =
      is_task ? std::move(Make(pair, options).target) : MakeTarget(pair.target, options.ForTarget(console_));
  if (!is_task) SettleSocket({app_.connections.target.get()});
  if (OnMade) OnMade(*app_.connections.target);
  app_.connections.target->Connect();
  app_.Settle();
}

template <class Body>
std::optional<std::string> TPairRun::Reported(Body body) {
  try {
    body();
    return std::nullopt;
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    progress_->Finish();
    const std::string message = console_.Without(error.what());
    console_.Error(Placed(ComparisonPlace(app_.connections.reference.get(), app_.connections.target.get(),
                                          app_.Dialect().TargetLost(), app_.Dialect().TableUnderWay(), message),
                          message));
    if (const TDialectRow* row = app_.DialectThatReads()) console_.Note(Format(kReads, row->word));
    return message;
  } catch (const std::bad_alloc&) {
    progress_->Finish();
    console_.Error(kOutOfMemory);
    return kOutOfMemory;
  }
}

}  // namespace velmora
