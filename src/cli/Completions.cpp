// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Completions.h"

#include <functional>
#include <map>

#include "cli/Console.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kShortHelp = 72;  // bytes; shells show it on the line of the option

// The beginning of a help text, as a shell has room for it.
std::string ShortHelp(const std::string& help) {
  if (help.size() <= kShortHelp) return help;
  const std::size_t blank = help.rfind(' ', kShortHelp);
  return help.substr(0, blank) + " ...";
}

std::string NamesOf(const std::vector<TCommandTable>& commands) {
  TStringList names;
  for (const TCommandTable& command : commands) names.push_back(command.path.back());
  return JoinList(names, " ");
}

// The first words that a second one has to follow.
std::string ParentsOf(const TCommandTable& program) {
  TStringList names;
  for (const TCommandTable& command : program.commands)
    if (!command.commands.empty()) names.push_back(command.path.back());
  return JoinList(names, " ");
}

// In quotes of a shell that takes nothing within them but the quote itself, which ends and begins them again.
std::string Quoted(const std::string& text) { return "'" + StrReplace(text, "'", "'\\''") + "'"; }

void ForEachCommand(const TCommandTable& table, const std::function<void(const TCommandTable&)>& act) {
  act(table);
  for (const TCommandTable& below : table.commands) ForEachCommand(below, act);
}

// --- bash

// A command is the first word, or the first two. `before` is the option that a value is for, also in --option=value,
// which bash takes apart.
constexpr char kBashFrame[] = R"(# Completions of velmora-cli for bash, made by: velmora-cli generate bash
_velmora_cli() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command='' words='' options='' files=''
  if [[ $word == = ]]; then
    word=
  elif [[ $before == = ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  ((COMP_CWORD < 2)) || command=${COMP_WORDS[1]}
  case $command in
    %s) ((COMP_CWORD < 3)) || command+=" ${COMP_WORDS[2]}" ;;
  esac
  case $command in
%s  esac
  case $command:$before in
%s    *) [[ $word != -* ]] || words=$options ;;
  esac
  COMPREPLY=()
  if [[ $words ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
  elif [[ $files ]]; then
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}
complete -F _velmora_cli velmora-cli
)";

std::string BashCommand(const TCommandTable& command) {
  TStringList options;
  for (const TOptionTable& option : command.options)
    options.insert(options.end(), option.names.begin(), option.names.end());
  std::string text = Format("    '%s') options='%s'", PathText(command), JoinList(options, " "));
  if (!command.commands.empty()) text += Format(" words='%s'", NamesOf(command.commands));
  for (const TArgumentTable& argument : command.arguments) {
    if (!argument.words.empty()) text += Format(" words='%s'", JoinList(ChoicesOf(argument.words), " "));
    if (IsFileName(argument.name)) text += " files=yes";
  }
  return text + " ;;\n";
}

// What is to be completed where the value stands.
std::string BashValue(const TOptionTable& option) {
  return Format("words='%s' files=%s", JoinList(ChoicesOf(option.value), " "), IsFileName(option.value) ? "yes" : "");
}

// An arm for each kind of value, with the options that take it, each of them after its command.
std::string BashValues(const TCommandTable& program) {
  std::map<std::string, TStringList> options;
  ForEachCommand(program, [&](const TCommandTable& command) {
    for (const TOptionTable& option : command.options)
      for (const std::string& name : option.names)
        if (!option.value.empty()) options[BashValue(option)].push_back(Format("'%s:%s'", PathText(command), name));
  });
  std::string text;
  for (const auto& [value, names] : options)
    text += Format("    %s)\n      %s ;;\n", JoinList(names, " | \\\n      "), value);
  return text;
}

// --- zsh

constexpr char kZshHead[] = "#compdef velmora-cli\n# Made by: velmora-cli generate zsh\n";
// Read as the completion's file the text is a call, and read by a shell that starts a definition.
constexpr char kZshFoot[] = R"(
if [[ $funcstack[1] == _velmora-cli ]]; then
  _velmora-cli "$@"
else
  compdef _velmora-cli velmora-cli
fi
)";
constexpr char kZshBelow[] = R"( \
    '1: :->command' '*:: :->rest'
  case $state in
    command)
      commands=(
%s      )
      _describe command commands
      ;;
    rest)
      case $words[1] in
        %s) %s_$words[1] ;;
      esac
      ;;
  esac
)";

std::string ZshValue(const std::string& name, const std::string& choices) {
  if (!choices.empty()) return Format(":%s:(%s)", name, choices);
  return Format(":%s:%s", name, IsFileName(name) ? "_files" : " ");
}

std::string ZshHelp(const std::string& help) {
  return "[" + StrReplace(StrReplace(ShortHelp(help), "[", "\\["), "]", "\\]") + "]";
}

// One for each of the option's names, which exclude each other.
std::string ZshOption(const TOptionTable& option) {
  std::string text;
  for (const std::string& name : option.names) {
    std::string spec = option.repeats ? "*" : "(" + JoinList(option.names, " ") + ")";
    spec += name;
    if (!option.value.empty()) spec += name.starts_with("--") ? "=" : "+";
    spec += ZshHelp(option.help);
    if (!option.value.empty()) {
      const TStringList choices = ChoicesOf(option.value);
      spec += ZshValue(choices.empty() ? option.value : "value", JoinList(choices, " "));
    }
    text += " \\\n    " + Quoted(spec);
  }
  return text;
}

std::string ZshArgument(const TArgumentTable& argument) {
  const std::string place = argument.repeats ? "*" : argument.required ? "" : ":";
  return " \\\n    " + Quoted(place + ZshValue(argument.name, JoinList(ChoicesOf(argument.words), " ")));
}

std::string ZshFunction(const TCommandTable& command) {
  const std::string name = "_velmora-cli" + std::string(command.path.empty() ? "" : "_") + PathText(command, "_");
  std::string text = "\n" + name + "() {\n";
  if (!command.commands.empty()) text += "  local curcontext=$curcontext state line commands\n";
  text += std::string("  _arguments") + (command.commands.empty() ? "" : " -C");
  for (const TOptionTable& option : command.options) text += ZshOption(option);
  for (const TArgumentTable& argument : command.arguments) text += ZshArgument(argument);
  if (command.commands.empty()) return text + "\n}\n";
  std::string described;
  for (const TCommandTable& below : command.commands)
    described += "        " + Quoted(below.path.back() + ":" + below.help) + "\n";
  return text + Format(kZshBelow, described, StrReplace(NamesOf(command.commands), " ", "|"), name) + "}\n";
}

// --- fish

constexpr char kFishHead[] = R"(# Completions of velmora-cli for fish, made by: velmora-cli generate fish
function __velmora_cli_is
    set -l words (commandline -opc)
    set -l command $words[2]
    if contains -- "$command" %s
        set command $words[2..3]
    end
    test "$command" = "$argv"
end
complete -c velmora-cli -f
)";

std::string FishLine(const TCommandTable& command, const std::string& rest) {
  return Format("complete -c velmora-cli -n '__velmora_cli_is %s' %s\n", PathText(command), rest);
}

std::string FishOption(const TOptionTable& option) {
  std::string text;
  for (const std::string& name : option.names)
    text += name.starts_with("--") ? "-l " + name.substr(2) + " " : "-s " + name.substr(1) + " ";
  const TStringList choices = ChoicesOf(option.value);
  if (!choices.empty())
    text += "-x -a " + Quoted(JoinList(choices, " ")) + " ";
  else if (!option.value.empty())
    text += IsFileName(option.value) ? "-r -F " : "-x ";
  return text + "-d " + Quoted(ShortHelp(option.help));
}

std::string FishCommand(const TCommandTable& command) {
  std::string text;
  bool files = false;
  for (const TCommandTable& below : command.commands)
    text += FishLine(command, "-a " + below.path.back() + " -d " + Quoted(below.help));
  for (const TArgumentTable& argument : command.arguments) {
    files = files || IsFileName(argument.name);
    if (!argument.words.empty()) text += FishLine(command, "-a " + Quoted(JoinList(ChoicesOf(argument.words), " ")));
  }
  if (files) text += FishLine(command, "-F");
  for (const TOptionTable& option : command.options) text += FishLine(command, FishOption(option));
  return text;
}

}  // namespace

std::string BashCompletions(const TCommandTable& program) {
  std::string commands;
  ForEachCommand(program, [&](const TCommandTable& command) { commands += BashCommand(command); });
  return Format(kBashFrame, StrReplace(ParentsOf(program), " ", " | "), commands, BashValues(program));
}

std::string ZshCompletions(const TCommandTable& program) {
  std::string functions;
  ForEachCommand(program, [&](const TCommandTable& command) { functions += ZshFunction(command); });
  return kZshHead + functions + kZshFoot;
}

std::string FishCompletions(const TCommandTable& program) {
  std::string text = Format(kFishHead, ParentsOf(program));
  ForEachCommand(program, [&](const TCommandTable& command) { text += FishCommand(command); });
  return text;
}

}  // namespace velmora
