#include <CLI/CLI.hpp>
#include <map>
#include <optional>
#include <ostream>

#include "cli/Commands.h"
#include "cli/ComparisonText.h"
#include "cli/Json.h"
#include "cli/PairRun.h"

namespace velmora {

namespace {

// Why an action may lose data; null for one that does not.
std::map<int, TJson> UnsafeReasons(const TApplication& app) {
  std::map<int, TJson> reasons;
  for (const TChange& change : app.exact.Changes())
    reasons.emplace(change.id, change.unsafe.empty() ? TJson() : TJson(change.unsafe));
  return reasons;
}

void AddExactResults(const TApplication& app, const std::optional<std::string>& error,
                     const std::optional<int>& on_server, TJson& document) {
  const std::map<int, TJson> reasons = UnsafeReasons(app);
  for (TJson& action : document["actions"]) action["unsafe"] = reasons.at(action["id"].get<int>());
  TJson skipped = TJson::array();
  for (const TSkippedTable& table : app.exact.Skipped())
    skipped.push_back({{"side", table.side}, {"table", table.table}, {"reason", table.reason}});
  document["skipped"] = std::move(skipped);
  document["not_followed"] = TJson(app.exact.NotFollowed());
  TJson objects = TJson::array();
  for (const TObjectDifference& object : app.exact.Objects())
    objects.push_back({{"kind", object.kind}, {"name", object.name}, {"difference", object.difference}});
  document["objects"] = std::move(objects);
  const bool proved = !error && (app.exact.Skipped().empty() || app.exact.DifferencesLeft() > 0);
  document["verified"] = proved ? TJson(app.exact.DifferencesLeft()) : TJson();
  document["verified_on_server"] = on_server ? TJson(*on_server) : TJson();
}

TJson Document(const TApplication& app, const std::optional<std::string>& error, const std::optional<int>& on_server) {
  TJson actions = TJson::array();
  for (const TActionRow* row = app.data.mtActions.First(); row != nullptr; row = app.data.mtActions.After(row->id)) {
    actions.push_back({{"id", row->id},
                       {"table", row->table},
                       {"item", row->item},
                       {"action_id", row->action_id},
                       {"action", row->Action()},
                       {"description", row->description}});
  }
  TJson document = {
      {"identical", !error && app.Identical()}, {"actions", std::move(actions)}, {"log", app.ActionLog()}};
  if (app.dialect == EDialect::Exact) AddExactResults(app, error, on_server, document);
  document["error"] = JsonOf(error);
  return document;
}

TJson LeastDocument(const TApplication& app) {
  TJson document = {{"identical", false}, {"actions", TJson::array()}, {"log", TJson::array()}};
  if (app.dialect == EDialect::Exact) {
    document["skipped"] = TJson::array();
    document["verified"] = document["verified_on_server"] = TJson();
  }
  document["error"] = kOutOfMemory;
  return document;
}

// Gives whether memory sufficed for it.
bool PrintJson(const TApplication& app, const std::optional<std::string>& error, const std::optional<int>& on_server,
               TConsole& console) {
  const auto least = [&] {
    console.Error(kOutOfMemory);
    return LeastDocument(app);
  };
  // What was found takes the memory that is wanting.
  const bool told = error == kOutOfMemory;
  return PrintDocument(
      console.out, [&] { return told ? LeastDocument(app) : Document(app, error, on_server); }, least);
}

}  // namespace

void TCompareCommand::Declare(CLI::App& app) {
  DeclarePair(app, pair_);
  DeclareFormat(app, format_);
  DeclareScratch(app, pair_);
  options_.DeclarePair(app);
}

int TCompareCommand::Execute(TConsole& console) {
  const auto kept = std::make_shared<TPairRun>(console, SystemClock());
  console.kept.push_back(kept);
  TPairRun& run = *kept;
  std::optional<std::string> error = run.Compare(pair_, options_, false);
  std::optional<int> on_server;
  if (!error && pair_.verify_on_server) error = run.VerifyOnServer(on_server);
  bool told = true;
  if (format_ == EFormat::Json)
    told = PrintJson(run.app(), error, on_server, console);
  else
    PrintComparison(run.app(), error.has_value(), console.out);
  run.HangUp();
  if (error || !told || on_server.value_or(0) > 0) return kExitFailure;
  return run.app().Identical() ? kExitSuccess : kExitDifferent;
}

}  // namespace velmora
