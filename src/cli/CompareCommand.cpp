// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CompareCommand.h"

#include <CLI/CLI.hpp>
#include <map>
#include <optional>
#include <ostream>

#include "cli/ComparisonText.h"
#include "cli/FailOnOptions.h"
#include "cli/FleetRun.h"
#include "cli/Json.h"
#include "cli/MappingCommand.h"
#include "cli/PairRun.h"
#include "cli/ReportOption.h"

namespace velmora {

namespace {

// What is not known is null, and so are rows and bytes that were not asked for.
void AddLock(const std::map<int, TActionLock>& locks, TJson& action) {
  const auto lock = locks.find(action["id"].get<int>());
  const bool sized = lock != locks.end() && lock->second.size;
  action["lock"] = lock == locks.end() ? TJson() : TJson(LockWord(lock->second.is));
  action["rows"] = sized ? TJson(lock->second.size->rows) : TJson();
  action["bytes"] = sized ? TJson(lock->second.size->bytes) : TJson();
}

void AddFindings(const TDialect& dialect, bool failed, const std::optional<int>& on_server, TJson& document) {
  const std::map<int, std::string> reasons = dialect.UnsafeActions();
  const std::map<int, TActionLock> locks = dialect.ActionLocks();
  for (TJson& action : document["actions"]) {
    const auto reason = reasons.find(action["id"].get<int>());
    action["unsafe"] = reason == reasons.end() ? TJson() : TJson(reason->second);
    AddLock(locks, action);
  }
  const TFindings findings = dialect.Findings();
  TJson skipped = TJson::array();
  for (const TSkippedTable& table : findings.skipped)
    skipped.push_back({{"side", table.side}, {"table", table.table}, {"reason", table.reason}});
  document["skipped"] = std::move(skipped);
  document["not_followed"] = TJson(findings.not_followed);
  TJson not_seen = TJson::array();
  for (const TKindsNotSeen& of : findings.not_seen) not_seen.push_back({{"side", of.side}, {"kinds", of.kinds}});
  document["not_seen"] = std::move(not_seen);
  TJson objects = TJson::array();
  for (const TObjectDifference& object : findings.objects)
    objects.push_back({{"kind", object.kind}, {"name", object.name}, {"difference", object.difference}});
  document["objects"] = std::move(objects);
  const TLeftOut& left = findings.left_out;
  document["left_out"] = {{"tables", left.tables}, {"objects", left.objects}, {"differences", left.changes}};
  document["renames"] = TJson(findings.renames);
  document["mapping"] = MappingJson(findings.mapping);
  document["unmade"] = UnmadeJson(findings.unmade);
  const bool proved = !failed && (findings.skipped.empty() || findings.differences_left > 0);
  document["verified"] = proved ? TJson(findings.differences_left) : TJson();
  document["verified_on_server"] = on_server ? TJson(*on_server) : TJson();
}

// The one in use. The reason is null where the user has chosen, and before the target was reached.
TJson DialectJson(const TApplication& app) {
  return {{"name", app.Used().word},
          {"automatic", app.Chosen().id == EDialect::Automatic},
          {"reason", app.Why().empty() ? TJson() : TJson(app.Why())}};
}

// What came of options beside the comparison itself.
struct TOutcome {
  const std::optional<std::string>& error;
  const std::optional<int>& on_server;
  TJson failed_on{};  // null where that was not asked
};

TJson Document(const TApplication& app, const TOutcome& outcome) {
  const std::optional<std::string>& error = outcome.error;
  TJson actions = TJson::array();
  for (const TActionRow* row = app.data.mtActions.First(); row != nullptr; row = app.data.mtActions.After(row->id)) {
    actions.push_back({{"id", row->id},
                       {"table", row->table},
                       {"item", row->item},
                       {"action_id", row->action_id},
                       {"action", row->Action()},
                       {"description", row->description}});
  }
  TJson document = {{"identical", !error && app.Dialect().Identical()},
                    {"actions", std::move(actions)},
                    {"log", app.Log()},
                    {"dialect", DialectJson(app)}};
  if (app.Dialect().Traits().has_findings) AddFindings(app.Dialect(), error.has_value(), outcome.on_server, document);
  if (!outcome.failed_on.is_null()) document["failed_on"] = outcome.failed_on;
  document["error"] = JsonOf(error);
  return document;
}

TJson LeastDocument(const TApplication& app) {
  TJson document = {
      {"identical", false}, {"actions", TJson::array()}, {"log", TJson::array()}, {"dialect", DialectJson(app)}};
  if (app.Dialect().Traits().has_findings) {
    for (const char* list : {"skipped", "not_followed", "not_seen", "objects", "mapping", "unmade"})
      document[list] = TJson::array();
    for (const char* proof : {"verified", "verified_on_server"}) document[proof] = TJson();
  }
  document["error"] = kOutOfMemory;
  return document;
}

// Gives whether memory sufficed for it.
bool PrintJson(const TApplication& app, const TOutcome& outcome, TConsole& console) {
  const auto least = [&] {
    console.Error(kOutOfMemory);
    return LeastDocument(app);
  };
  // What was found takes the memory that is wanting.
  const bool told = outcome.error == kOutOfMemory;
  return PrintDocument(
      console.out, [&] { return told ? LeastDocument(app) : Document(app, outcome); }, least);
}

}  // namespace

TCompareCommand::TCompareCommand() = default;
TCompareCommand::~TCompareCommand() = default;

void TCompareCommand::Declare(CLI::App& app) {
  app_ = &app;
  DeclarePair(app, pair_);
  DeclareFleet(app, pair_, fleet_);
  DeclareFormat(app, format_);
  DeclareScratch(app, pair_);
  DeclareReports(app, "what was found", reports_);
  DeclareFailOn(app, fail_on_);
  options_.DeclarePair(app);
}

int TCompareCommand::CompareMany(TConsole& console) {
  CheckFleet(pair_, *app_);
  TFleetRun run(pair_, options_, fleet_, EFleetUse::Compare, format_, console);
  run.Compare();
  run.TellGroups();
  run.TellSummary();
  return run.Status();
}

int TCompareCommand::Execute(TConsole& console) {
  if (!pair_.targets.empty()) return CompareMany(console);
  run_ = std::make_unique<TPairRun>(console, SystemClock());
  TPairRun& run = *run_;
  std::optional<std::string> error = run.Compare(pair_, options_, false);
  std::optional<int> on_server;
  if (!error && pair_.verify_on_server) error = run.VerifyOnServer(on_server);
  if (!error && fail_on_.Any()) error = run.LookForFailures(fail_on_);
  if (!error && !reports_.empty()) error = run.GenerateScript();
  if (!error) error = WriteReports(run, reports_);
  bool told = true;
  if (format_ == EFormat::Json)
    told = PrintJson(run.app(), {error, on_server, fail_on_.Any() ? JsonOf(run.Failures()) : TJson()}, console);
  else
    PrintComparison(run.app(), error.has_value(), console.out, console.out_colours);
  run.HangUp();
  if (error || !told || on_server.value_or(0) > 0) return kExitFailure;
  if (fail_on_.Any()) return run.Failures().empty() ? kExitSuccess : kExitDifferent;
  return run.app().Dialect().Identical() ? kExitSuccess : kExitDifferent;
}

}  // namespace velmora
