// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ScriptCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>

#include "cli/FailOnOptions.h"
#include "cli/FleetRun.h"
#include "cli/Json.h"
#include "cli/PairRun.h"
#include "cli/ReportOption.h"
#include "exact/run/StructureDigest.h"
#include "fleet/GroupScripts.h"
#include "util/Errors.h"
#include "util/Files.h"

namespace velmora {

namespace {

// And one for a dialect that was not chosen by the user, and those of structures.
constexpr std::size_t kHeaderLines = 2;
constexpr char kStandardOutput[] = "-";
constexpr char kFolderNeeded[] = "--targets writes a script for each group of targets: give the folder by -o FOLDER";

// Whether the script leaves nothing that a comparison would find. What it leaves is told by the comparison.
bool ReachesReference(const TApplication& app) {
  const TFindings findings = app.Dialect().Findings();
  return findings.skipped.empty() && findings.differences_left == 0;
}

// `failures` is null where they were not asked for.
std::string JsonText(const TApplication& app, const TStringList& lines, const std::vector<TFailure>* failures,
                     const std::optional<std::string>& error) {
  std::size_t head = kHeaderLines + (app.Why().empty() ? 0 : 1);
  while (head < lines.size() && lines[head].starts_with(kStructureLine)) ++head;
  const auto body = lines.begin() + static_cast<std::ptrdiff_t>(std::min(head, lines.size()));
  TJson document = {{"header", TStringList(lines.begin(), body)}, {"lines", TStringList(body, lines.end())}};
  if (failures != nullptr) document["failed_on"] = JsonOf(*failures);
  document["error"] = JsonOf(error);
  return TextOf(document);
}

}  // namespace

void TScriptCommand::Declare(CLI::App& app) {
  app_ = &app;
  DeclarePair(app, pair_);
  DeclareFleet(app, pair_, fleet_);
  app.add_option("-o,--output", output_,
                 "Write the script to FILE; an old file is replaced only by a whole script; - is standard output. With "
                 "--targets: the folder for a script for each group of targets that are alike")
      ->type_name("FILE")
      ->check([](const std::string& name) {
        return name.empty() ? std::string("an empty name is no file") : std::string();
      });
  DeclareReports(app, "what was found, with the script,", reports_);
  DeclareFormat(app, format_);
  DeclareAllowEmpty(app, pair_);
  DeclareScratch(app, pair_);
  DeclareFailOn(app, fail_on_);
  options_.DeclarePair(app);
}

int TScriptCommand::WriteMany(TConsole& console) {
  CheckFleet(pair_, *app_);
  if (output_.empty() || output_ == kStandardOutput) RaiseError(kFolderNeeded);
  GroupFolder(output_);  // before anything is compared
  TFleetRun run(pair_, options_, fleet_, EFleetUse::Script, format_, console);
  run.Compare();
  run.WriteScripts(output_);
  return run.ScriptStatus();
}

int TScriptCommand::Execute(TConsole& console) {
  if (!pair_.targets.empty()) return WriteMany(console);
  CheckFilesApart({{"REFERENCE", pair_.reference}, {"--output", output_}}, reports_);
  CheckFilesApart({{"TARGET", pair_.target}, {"--output", output_}}, reports_);
  TPairRun run(console, SystemClock());
  std::optional<std::string> error = run.Compare(pair_, options_, true);
  std::optional<int> left;
  if (!error && pair_.verify_on_server) error = run.VerifyOnServer(left);
  if (!error && fail_on_.Any()) error = run.LookForFailures(fail_on_);
  if (!error) error = run.GenerateScript();
  if (!error) error = WriteReports(run, reports_);
  const bool to_file = !output_.empty() && output_ != kStandardOutput;
  const std::string text = format_ == EFormat::Json ? JsonText(run.app(), run.editor().Lines(),
                                                               fail_on_.Any() ? &run.Failures() : nullptr, error)
                                                    : run.editor().Text();
  if (to_file && !error)
    WriteFileText(output_, text);
  else if (format_ == EFormat::Json)
    console.out << text;
  else if (!error)
    console.WriteExact(text);
  const bool reaches = !error && left.value_or(0) == 0 && ReachesReference(run.app());
  if (!reaches) return kExitFailure;
  return run.Failures().empty() ? kExitSuccess : kExitDifferent;
}

}  // namespace velmora
