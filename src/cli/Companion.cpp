#include "cli/Companion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <new>
#include <ostream>

#include "app/Sources.h"
#include "cli/Command.h"
#include "cli/Commands.h"
#include "util/Errors.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kAbout[] = "Compares the structure of two databases and writes the MySQL script that makes them equal.";

std::string Footer() {
  return std::string("\n") + kSourceForms +
         "\n\nExit status: 0 done, for `compare` identical; 1 `compare` found differences; 2 failed."
         "\nResults go to standard output, progress, warnings and errors to standard error."
         "\n\nExamples:\n  velmora-cli compare reference.sql target.sql\n"
         "  velmora-cli script reference.sql target.sql -o sync.sql\n"
         "  velmora-cli schema dump.sql customers --format json\n";
}

std::string VersionLine() { return std::string(kCompanionName) + " " + VersionText(); }

// The exit status of what the arguments alone answer: help, version, a fault in them.
int AnswerArguments(const CLI::App& app, const CLI::ParseError& error, TConsole& console) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
    return app.exit(error, console.out, console.err);
  console.Error(std::string(error.what()) + " (--help tells more)");
  return kExitFailure;
}

int Execute(TCommand& command, TConsole& console) {
  try {
    return command.Execute(console);
  } catch (const EAbort&) {
    return kExitFailure;
  } catch (const std::bad_alloc&) {
    console.Error("out of memory");
  } catch (const std::exception& error) {
    console.Error(error.what());
  }
  return kExitFailure;
}

}  // namespace

std::vector<std::unique_ptr<TCommand>> MakeCommands() {
  std::vector<std::unique_ptr<TCommand>> commands;
  commands.push_back(std::make_unique<TCompareCommand>());
  commands.push_back(std::make_unique<TScriptCommand>());
  commands.push_back(std::make_unique<TSchemaCommand>());
  commands.push_back(std::make_unique<TParseCommand>());
  commands.push_back(std::make_unique<TReplayCommand>());
  commands.push_back(std::make_unique<TSplitCommand>());
  return commands;
}

void DeclareFormat(CLI::App& app, EFormat& format) {
  static const std::map<std::string, EFormat> kFormats{{"text", EFormat::Text}, {"json", EFormat::Json}};
  app.add_option("--format", format, "text, or json: one document, printed on a failure too")
      ->transform(CLI::CheckedTransformer(kFormats, CLI::ignore_case).description(""))
      ->type_name("text|json");
}

void DeclareVerbose(CLI::App& app, bool& verbose) {
  app.add_flag("--verbose", verbose, "Name every statement of a file that is passed over");
}

void DeclarePair(CLI::App& app, std::string& reference, std::string& target) {
  app.add_option("REFERENCE", reference, "The database as it should be")->required();
  app.add_option("TARGET", target, "The database that the script changes")->required();
}

int RunCompanion(const std::vector<std::string>& arguments, TConsole& console) {
  CLI::App app(kAbout, kCompanionName);
  app.footer(Footer());
  app.set_version_flag("--version", VersionLine());
  app.require_subcommand(1);
  const std::vector<std::unique_ptr<TCommand>> commands = MakeCommands();
  std::map<const CLI::App*, TCommand*> by_app;
  for (const std::unique_ptr<TCommand>& command : commands) {
    CLI::App* sub = app.add_subcommand(command->Name(), command->Summary());
    sub->set_version_flag("--version", VersionLine());
    sub->footer(std::string("\n") + kSourceForms);
    command->Declare(*sub);
    by_app[sub] = command.get();
  }
  try {
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    app.parse(reversed);
  } catch (const CLI::ParseError& error) {
    return AnswerArguments(app, error, console);
  }
  return Execute(*by_app.at(app.get_subcommands().front()), console);
}

}  // namespace velmora
