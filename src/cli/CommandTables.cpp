// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CommandTables.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>

#include "cli/Command.h"
#include "util/Text.h"

namespace velmora {

namespace {

bool Repeats(const CLI::Option& option) { return option.get_expected_max() >= CLI::detail::expected_max_vector_size; }

TArgumentTable TableOfArgument(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return {.name = option.get_name(true),
          .help = option.get_description(),
          .words = ChoicesOf(type).empty() ? "" : type,
          .required = option.get_required(),
          .repeats = Repeats(option)};
}

TStringList OptionNames(const std::set<CLI::Option*>& options) {
  TStringList names;
  for (const CLI::Option* option : options) names.push_back(option->get_name());
  std::ranges::sort(names);
  return names;
}

TOptionTable TableOfOption(const CLI::Option& option) {
  TOptionTable table;
  for (const std::string& name : option.get_snames()) table.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) table.names.push_back("--" + name);
  if (option.get_type_size() != 0) table.value = option.get_type_name();
  table.help = option.get_description();
  table.repeats = Repeats(option);
  table.needs = OptionNames(option.get_needs());
  table.excludes = OptionNames(option.get_excludes());
  return table;
}

TCommandTable TableOf(const CLI::App& app, const TStringList& path) {
  TCommandTable table;
  table.path = path;
  table.help = app.get_description();
  for (const CLI::Option* option : app.get_options())
    if (option->get_positional())
      table.arguments.push_back(TableOfArgument(*option));
    else
      table.options.push_back(TableOfOption(*option));
  for (const CLI::App* below : app.get_subcommands({})) {
    TStringList below_path = path;
    below_path.push_back(below->get_name());
    table.commands.push_back(TableOf(*below, below_path));
  }
  return table;
}

}  // namespace

TCommandTable ProgramTable() {
  const std::vector<std::unique_ptr<TCommand>> commands = MakeCommands();
  CLI::App app;
  TManners manners;
  DeclareProgram(app, commands, manners);
  return ProgramTable(app);
}

TCommandTable ProgramTable(const CLI::App& program) { return TableOf(program, {}); }

std::vector<const TCommandTable*> LeafCommands(const TCommandTable& table) {
  if (table.commands.empty()) return {&table};
  std::vector<const TCommandTable*> leaves;
  for (const TCommandTable& below : table.commands) std::ranges::copy(LeafCommands(below), std::back_inserter(leaves));
  return leaves;
}

const TCommandTable* CommandOf(const TCommandTable& program, const TStringList& arguments) {
  const TCommandTable* command = &program;
  for (const std::string& word : arguments) {
    const auto below = std::ranges::find(command->commands, word, [](const auto& row) { return row.path.back(); });
    if (below == command->commands.end()) break;
    command = &*below;
  }
  return command;
}

std::string PathText(const TCommandTable& command, std::string_view separator) {
  return JoinList(command.path, separator);
}

TStringList ChoicesOf(const std::string& value) {
  TStringList words;
  if (value.find('|') != std::string::npos) SplitText("|", value, words);
  return words;
}

bool IsFileName(const std::string& name) { return InList(name, {"FILE", "REFERENCE", "TARGET", "SOURCE"}); }

}  // namespace velmora
