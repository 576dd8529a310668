// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Companion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <new>
#include <ostream>

#include "app/Sources.h"
#include "app/Tasks.h"
#include "cli/Command.h"
#include "cli/CommandTables.h"
#include "cli/CompareCommand.h"
#include "cli/Environment.h"
#include "cli/ExportCommand.h"
#include "cli/GenerateCommand.h"
#include "cli/LintCommand.h"
#include "cli/Manners.h"
#include "cli/MappingCommand.h"
#include "cli/NearWords.h"
#include "cli/RowsCommand.h"
#include "cli/ScriptCommand.h"
#include "cli/SplitCommand.h"
#include "cli/StandardInput.h"
#include "cli/StructureCommands.h"
#include "cli/SyncCommand.h"
#include "cli/TaskCommand.h"
#include "crash/CrashNotes.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kAbout[] = "Compares the structure of two databases and writes the MySQL script that makes them equal.";

std::string Footer() {
  return std::string("\n") + kSourceForms +
         "\n\nExit status: 0 done, for `compare` identical; 1 `compare` found differences, `lint` something grave; 2 "
         "failed."
         "\nResults go to standard output, progress, warnings and errors to standard error.\n\n" +
         kEnvironmentHelp +
         "\n\nExamples:\n  velmora-cli compare reference.sql target.sql\n"
         "  velmora-cli script reference.sql target.sql -o sync.sql\n"
         "  velmora-cli sync reference.sql mysql://admin@db.example.org/shop\n"
         "  velmora-cli schema dump.sql customers --format json\n";
}

std::string VersionLine() { return std::string(kCompanionName) + " " + VersionText(); }

constexpr char kTellsMore[] = " (--help tells more)";
constexpr char kNoCommand[] = "\"%s\" is no command%s%s";
constexpr char kLoginPath[] =
    "--login-path is not supported, since such files only hide what they hold: give --defaults-file or --password-file";
constexpr char kNoOption[] = "%s is no option of %s%s%s";

// Raises for a word in the place of a command that is none.
void CheckCommand(const TCommandTable& command, const TStringList& rest) {
  if (command.commands.empty() || rest.empty() || rest.front().starts_with('-')) return;
  TStringList words;
  for (const TCommandTable& below : command.commands) words.push_back(below.path.back());
  const std::string of = command.path.empty() ? "" : " of " + PathText(command);
  RaiseError(Format(kNoCommand, rest.front(), of + DidYouMean(rest.front(), words), kTellsMore));
}

// The arguments, with the options of the environment behind the words of the command.
TStringList Parse(CLI::App& app, const TCommandTable& command, const TStringList& arguments,
                  TEnvironmentOptions& environment, const TConsole& console) {
  const auto behind = arguments.begin() + static_cast<std::ptrdiff_t>(command.path.size());
  const TStringList rest(behind, arguments.end());
  CheckCommand(command, rest);
  environment = TEnvironmentOptions(command, rest, console);
  TStringList all = arguments;
  all.insert(all.begin() + (behind - arguments.begin()), environment.Arguments().begin(),
             environment.Arguments().end());
  TStringList reversed(all.rbegin(), all.rend());
  app.parse(reversed);
  return all;
}

// What the user may have meant by the options that the command does not have; empty where nobody knows.
std::string NearOption(const TCommandTable& command, const TStringList& unknown) {
  TStringList names;
  for (const TOptionTable& option : command.options)
    std::ranges::copy_if(option.names, std::back_inserter(names), [](const auto& name) { return name.size() > 2; });
  for (const std::string& argument : unknown) {
    const std::string name = argument.substr(0, argument.find('='));
    if (name == "--login-path") return kLoginPath;
    const std::string near = name.starts_with("--") ? DidYouMean(name, names) : std::string();
    if (!near.empty()) return Format(kNoOption, name, PathText(command), near, kTellsMore);
  }
  return {};
}

// The exit status of what the arguments alone answer: help, version, a fault in them.
int AnswerArguments(const CLI::App& app, const CLI::ParseError& error, const TEnvironmentOptions& environment,
                    const TCommandTable& command, TConsole& console) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
    return app.exit(error, console.out, console.err);
  const bool unknown = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
  const std::string near = unknown ? NearOption(command, app.remaining(true)) : std::string();
  console.Error(near.empty() ? environment.WithVariables(error.what()) + kTellsMore : near);
  return kExitFailure;
}

int Execute(TCommand& command, TConsole& console) {
  NoteForCrash(command.Name());
  try {
    return command.Execute(console);
  } catch (const EAbort&) {
    return kExitFailure;
  } catch (const std::bad_alloc&) {
    console.Error(kOutOfMemory);
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
  commands.push_back(std::make_unique<TSyncCommand>());
  commands.push_back(std::make_unique<TExportCommand>());
  commands.push_back(std::make_unique<TLintCommand>());
  commands.push_back(std::make_unique<TMappingCommand>());
  commands.push_back(std::make_unique<TSchemaCommand>());
  commands.push_back(std::make_unique<TParseCommand>());
  commands.push_back(std::make_unique<TReplayCommand>());
  commands.push_back(std::make_unique<TSplitCommand>());
  commands.push_back(std::make_unique<TRowsCommand>());
  commands.push_back(std::make_unique<TTaskCommand>());
  commands.push_back(std::make_unique<TGenerateCommand>());
  return commands;
}

void DeclareProgram(CLI::App& app, const std::vector<std::unique_ptr<TCommand>>& commands, TManners& manners) {
  app.set_version_flag("--version", VersionLine());
  app.require_subcommand(1);
  for (const std::unique_ptr<TCommand>& command : commands) {
    CLI::App* sub = app.add_subcommand(command->Name(), command->Summary());
    sub->set_version_flag("--version", VersionLine());
    sub->footer(std::string("\n") + kSourceForms);
    command->Declare(*sub);
    const std::vector<CLI::App*> below = sub->get_subcommands([](CLI::App*) { return true; });
    if (below.empty()) DeclareManners(*sub, manners);
    for (CLI::App* nested : below) {
      nested->set_version_flag("--version", VersionLine());
      DeclareManners(*nested, manners);
    }
  }
}

void DeclareChoice(CLI::App& app, const std::string& name, const TStringList& words, const std::string& help,
                   const std::function<void(std::size_t)>& choose) {
  const auto take = [name, words, choose](const std::string& given) {
    const std::ptrdiff_t place = IndexOf(words, given);
    if (place == kNotInList) throw CLI::ValidationError(name, "\"" + given + "\" is none of " + JoinList(words, ", "));
    choose(static_cast<std::size_t>(place));
  };
  app.add_option_function<std::string>(name, take, help)->type_name(JoinList(words, "|"));
}

void DeclareNumber(CLI::App& app, const std::string& name, std::int64_t least, std::int64_t most,
                   const std::string& help, const std::function<void(std::int64_t)>& take) {
  const auto check = [name, least, most, take](const std::string& given) {
    const std::optional<std::int64_t> value = TryStrToInt(given);
    if (!value || *value < least || *value > most)
      throw CLI::ValidationError(name, Format("\"%s\" is no whole number from %d to %d", given, least, most));
    take(*value);
  };
  app.add_option_function<std::string>(name, check, help)->type_name("N");
}

void DeclareFormat(CLI::App& app, EFormat& format) {
  DeclareChoice(app, "--format", {"text", "json"}, "text, or json: one document, printed on a failure too",
                [&format](std::size_t choice) { format = choice == 0 ? EFormat::Text : EFormat::Json; });
}

// What `take` raises is a fault of the argument.
std::function<void(const std::string&)> Taking(const std::string& name,
                                               const std::function<void(const std::string&)>& take) {
  return [name, take](const std::string& text) {
    try {
      take(text);
    } catch (const EVelmora& error) {
      throw CLI::ValidationError(name, error.what());
    }
  };
}

// An option that may be given several times, each time with one text.
void DeclareEach(CLI::App& app, const std::string& name, const std::string& type, const std::string& help,
                 const std::function<void(const std::string&)>& take) {
  const auto take_all = [one = Taking(name, take)](const TStringList& texts) {
    for (const std::string& text : texts) one(text);
  };
  app.add_option_function<TStringList>(name, take_all, help)->type_name(type)->allow_extra_args(false);
}

void DeclarePair(CLI::App& app, TPair& pair) {
  app.add_option("REFERENCE", pair.reference, "The database as it should be, or a task file (.vlt) for both sides")
      ->required();
  app.add_option("TARGET", pair.target, "The database that the script changes");
  DeclareDialect(
      app,
      "auto: exact, but standard where the target's server is older than MySQL 5.0; exact: compare creation texts "
      "without loss; standard: the statements that the program has always written; otherwise as the task file says, "
      "and auto where there is none",
      [&pair](EDialect dialect) { pair.dialect = dialect; });
  DeclareEach(
      app, "--map-collation", "A=B",
      "Exact dialect: where the reference names the collation or character set A, write B, which the target's server "
      "knows; may be given several times",
      [&pair](const std::string& mapping) { AddToCollationMap(mapping, pair.collations); });
  DeclareExact(app, pair.exact);
  DeclareForeign(app, pair.foreign);
  app.callback([&pair] {
    const bool is_task = IsTaskFile(pair.reference);
    if (!pair.targets.empty() && !pair.target.empty())
      throw CLI::ValidationError("TARGET", "--targets lists the targets: leave TARGET out");
    if (!pair.targets.empty()) return;
    if (pair.target_alone && !is_task && pair.target.empty()) pair.target = pair.reference;
    if (is_task && !pair.target.empty()) throw CLI::ValidationError("TARGET", "a task file holds both sides already");
    if (!is_task && pair.target.empty()) throw CLI::RequiredError("TARGET");
  });
}

void DeclareMapping(CLI::App& app, TForeignWishes& wishes) {
  DeclareEach(
      app, "--map", "WHAT=TYPE",
      "A reference that is not MySQL: the MySQL type of a column (TABLE.COLUMN=type) or of all columns of a type "
      "('number(10,2)=type', number=type); may be given several times",
      [&wishes](const std::string& rule) { wishes.rules.push_back(ReadMapRule(rule)); });
  app.add_flag("--whole-numbers", wishes.whole_numbers,
               "A reference that is not MySQL: decimals and number fields without digits behind the point become "
               "integers that hold as many digits");
  const auto take_collation = [&wishes](const std::string& name) {
    try {
      wishes.collation = ReadCollation(name);
    } catch (const EVelmora& error) {
      throw CLI::ValidationError("--collation", error.what());
    }
  };
  app.add_option_function<std::string>("--collation", take_collation,
                                       "A reference that is not MySQL: the collation of tables and columns that are "
                                       "new in the target, as in utf8mb4_bin; those that are there keep theirs")
      ->type_name("NAME");
  DeclareChoice(app, "--names", {"keep", "lower"},
                "A reference that is not MySQL: its names as they are, or in lower case",
                [&wishes](std::size_t choice) { wishes.names = choice == 0 ? ENameCase::Keep : ENameCase::Lower; });
}

void DeclareForeign(CLI::App& app, TForeignWishes& wishes) {
  DeclareMapping(app, wishes);
  app.add_option("--accept", wishes.accepted,
                 "A reference that is not MySQL: what it has and MySQL has no form for, such as a default, need not be "
                 "there for the databases to be identical; may be given several times")
      ->type_name("TABLE.ELEMENT")
      ->allow_extra_args(false);
  app.add_flag("--strict-types", wishes.strict_types,
               "A reference that is not MySQL: a type of the target that holds more than the source's is a difference");
  app.add_flag("--accept-timestamp", wishes.accept_timestamp,
               "A reference that is not MySQL: timestamp, which ends in 2038, counts as equal to datetime");
  app.add_flag("--drop-obsolete", wishes.drop_obsolete,
               "A reference that is not MySQL: tables that the target alone has go, which is unsafe");
}

namespace {

constexpr char kOfExact[] = "Exact dialect: ";

void DeclareOption(CLI::App& app, const TExactOption& option, const std::string& help, TExactWishes& wishes) {
  const std::string name = "--" + std::string(option.word);
  const auto take = [&wishes, &option](const std::string& argument) { option.take(wishes, argument); };
  if (option.argument.empty())
    app.add_flag_callback(
        name, [take] { take({}); }, help);
  else if (option.many)
    DeclareEach(app, name, std::string(option.argument), help, take);
  else
    app.add_option_function<std::string>(name, Taking(name, take), help)->type_name(std::string(option.argument));
}

}  // namespace

void DeclareExact(CLI::App& app, TExactWishes& wishes) {
  for (const TExactOption& option : ExactOptions())
    if (!option.of_run) DeclareOption(app, option, kOfExact + std::string(option.help), wishes);
}

void DeclareExactOfRun(CLI::App& app, TExactWishes& wishes) {
  for (const TExactOption& option : ExactOptions())
    if (option.of_run) DeclareOption(app, option, kOfExact + std::string(option.help), wishes);
}

void DeclareExact(CLI::App& app, const TStringList& words, TExactWishes& wishes) {
  for (const TExactOption& option : ExactOptions())
    if (IndexOf(words, option.word) != kNotInList) DeclareOption(app, option, std::string(option.help), wishes);
}

void DeclareDialect(CLI::App& app, const std::string& help, const std::function<void(EDialect)>& choose) {
  TStringList words;
  for (const TDialectRow& row : Dialects()) words.emplace_back(row.word);
  DeclareChoice(app, "--dialect", words, help, [choose](std::size_t choice) { choose(Dialects()[choice].id); });
}

void DeclareAllowEmpty(CLI::App& app, TPair& pair) {
  app.add_flag("--allow-empty-reference", pair.allow_empty_reference,
               "Go on with a reference without any table, which makes the target lose all of its own");
}

void DeclareScratch(CLI::App& app, TPair& pair) {
  app.add_flag("--via-server", pair.via_server,
               "Exact dialect: have the target's server read a FILE.sql reference: its statements on tables and "
               "indexes are run in a scratch database that is removed afterwards");
  app.add_flag("--verify-on-server", pair.verify_on_server,
               "Exact dialect: try the script first on a copy of the target's structure, in a scratch database of its "
               "server that is removed afterwards");
}

TCompanion::TCompanion() : commands_(MakeCommands()) {}
TCompanion::~TCompanion() = default;

int TCompanion::Run(const std::vector<std::string>& arguments, TConsole& console) {
  console.secrets = TSecrets(arguments);
  TManners manners;
  Adopt(manners, console);
  CLI::App app(kAbout, kCompanionName);
  app.footer(Footer());
  DeclareProgram(app, commands_, manners);
  const TCommandTable program = ProgramTable(app);
  const TCommandTable& command = *CommandOf(program, arguments);
  TEnvironmentOptions environment;
  try {
    const TStringList all = Parse(app, command, arguments, environment, console);
    Adopt(manners, console);
    CheckStandardInput(command, all, console);
  } catch (const CLI::ParseError& error) {
    return AnswerArguments(app, error, environment, command, console);
  } catch (const EVelmora& error) {
    console.Error(error.what());
    return kExitFailure;
  }
  for (const std::string& warning : environment.Warnings()) console.Warn(warning, EWeight::Decides);
  const std::string given = app.get_subcommands().front()->get_name();
  return Execute(**std::ranges::find_if(commands_, [&](const auto& row) { return given == row->Name(); }), console);
}

}  // namespace velmora
