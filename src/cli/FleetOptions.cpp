// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/FleetOptions.h"

#include <CLI/CLI.hpp>

#include "app/Tasks.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr int kMostJobs = 64;
constexpr int kMostCanaries = 1000000;
constexpr char kOfOne[] = "--%s is for one target, and not for those of --targets";
constexpr char kTask[] = "A task file holds one target: give --targets a reference alone";
constexpr char kStandard[] = "--targets takes the exact dialect alone: leave --dialect out";
constexpr char kOfForeign[] =
    "--targets takes a MySQL reference alone, to which what is said of other sources is nothing";

}  // namespace

void DeclareFleet(CLI::App& app, TPair& pair, TFleetOptions& options) {
  CLI::Option* targets = app.add_option("--targets", pair.targets,
                                        "Instead of TARGET: all that FILE lists, a source a line; "
                                        "mysql://HOST/tenant_* stands for the databases of these names")
                             ->type_name("FILE");
  DeclareNumber(app, "--jobs", 1, kMostJobs, "With --targets: work on each server by up to N connections (4)",
                [&options](std::int64_t count) { options.jobs = static_cast<std::size_t>(count); });
  app.add_option_function<std::string>(
         "--slice",
         [&options](const std::string& text) {
           try {
             options.slice = ReadSlice(text);
           } catch (const EVelmora& error) {
             throw CLI::ValidationError("--slice", error.what());
           }
         },
         "With --targets: take the I-th of N shares of them; a target's name alone tells in which one it is")
      ->type_name("I/N");
  app.add_flag("--compare-each", options.compare_each,
               "With --targets: take each target apart, those too whose texts are, byte by byte, what a target's were "
               "that is identical");
  for (const char* name : {"--jobs", "--slice", "--compare-each"}) app.get_option(name)->needs(targets);
}

void DeclareFleetSync(CLI::App& app, TFleetSyncOptions& options) {
  DeclareNumber(app, "--canary", 0, kMostCanaries,
                "With --targets: of targets that are alike run N first, one after the other (0)",
                [&options](std::int64_t count) { options.canary = static_cast<std::size_t>(count); });
  app.add_flag("--keep-going", options.keep_going,
               "With --targets: go on when a target fails; otherwise nothing more begins");
  for (const char* name : {"--canary", "--keep-going"}) app.get_option(name)->needs(app.get_option("--targets"));
}

void CheckFleet(const TPair& pair, const CLI::App& app) {
  if (IsTaskFile(pair.reference)) RaiseError(kTask);
  if (pair.dialect == EDialect::Standard) RaiseError(kStandard);
  if (pair.foreign.Any()) RaiseError(kOfForeign);
  for (const char* name :
       {"verify-on-server", "via-server", "report", "connections", "script", "confirm-database", "osc", "fail-on"}) {
    const CLI::Option* option = app.get_option_no_throw("--" + std::string(name));
    if (option != nullptr && option->count() > 0) RaiseError(Format(kOfOne, name));
  }
}

}  // namespace velmora
