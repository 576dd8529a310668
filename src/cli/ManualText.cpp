// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ManualText.h"

#include <algorithm>
#include <iterator>

#include "app/Sources.h"
#include "cli/Console.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kCommandsHead[] = "# COMMANDS\n\n";
constexpr char kOptionsHead[] = "# OPTIONS\n\n";
constexpr char kSourcesHead[] = "# SOURCES\n\n";

// As a text between marks: letters that are marks themselves are said to be none.
std::string Plain(const std::string& text) {
  std::string plain;
  for (const char letter : text) {
    if (std::string_view("\\*_<>").find(letter) != std::string_view::npos) plain += '\\';
    plain += letter;
  }
  return plain;
}

std::string Bold(const std::string& text) { return "*" + Plain(text) + "*"; }
std::string Slanted(const std::string& text) { return "_" + Plain(text) + "_"; }

// --- Commands

std::string Placeholder(const TArgumentTable& argument) {
  const std::string name = Slanted(argument.name) + (argument.repeats ? "..." : "");
  return argument.required ? name : "[" + name + "]";
}

std::string CommandEntry(const TCommandTable& command) {
  std::string text = Bold(kCompanionName + (" " + PathText(command))) + " [" + Slanted("OPTION") + "...]";
  for (const TArgumentTable& argument : command.arguments) text += " " + Placeholder(argument);
  text += "\n\t" + Plain(command.help) + ".\n";
  for (const TArgumentTable& argument : command.arguments)
    text += "\n\t" + Slanted(argument.name) + ": " + Plain(argument.help) + ".\n";
  return text + "\n";
}

// --- Options: each once, under the commands that take it

// What goes with an option and what does not may hang on the command.
struct TRule {
  std::string text;
  std::string commands;
};

struct TOptionEntry {
  const TOptionTable* option;
  std::string commands;
  std::vector<TRule> rules;
};

constexpr char kRepeats[] = "may be given several times";

std::string BoldNames(const TStringList& options) {
  TStringList names;
  std::ranges::transform(options, std::back_inserter(names), Bold);
  return JoinList(names, ", ");
}

// Without its rules, so that options of several commands are seen to be one.
std::string EntryText(const TOptionTable& option) {
  const std::string value = option.value.empty() ? "" : " " + Slanted(option.value);
  const bool told = !option.repeats || option.help.find(kRepeats) != std::string::npos;
  return BoldNames(option.names) + value + "\n\t" + Plain(option.help) + (told ? "" : std::string("; ") + kRepeats) +
         ".\n";
}

std::vector<TRule> RulesOf(const TOptionTable& option, const std::string& command) {
  std::vector<TRule> rules;
  if (!option.needs.empty()) rules.push_back({"goes only with " + BoldNames(option.needs), command});
  if (!option.excludes.empty()) rules.push_back({"does not go with " + BoldNames(option.excludes), command});
  return rules;
}

void AddCommand(std::string& commands, const std::string& command) {
  if (commands != command && !commands.ends_with(", " + command)) commands += ", " + command;
}

void AddRules(std::vector<TRule>& known, const std::vector<TRule>& rules) {
  for (const TRule& rule : rules)
    if (const auto same = std::ranges::find(known, rule.text, &TRule::text); same != known.end())
      AddCommand(same->commands, rule.commands);
    else
      known.push_back(rule);
}

std::string EntryWithRules(const TOptionEntry& entry) {
  std::string text = EntryText(*entry.option);
  for (const TRule& rule : entry.rules)
    text += "\t" + (rule.commands == entry.commands ? "It " : "In " + Bold(rule.commands) + " it ") + rule.text + ".\n";
  return text + "\n";
}

std::vector<TOptionEntry> OptionEntries(const std::vector<const TCommandTable*>& commands) {
  std::vector<TOptionEntry> entries;
  for (const TCommandTable* command : commands)
    for (const TOptionTable& option : command->options) {
      const std::string text = EntryText(option), name = PathText(*command);
      const auto known =
          std::ranges::find_if(entries, [&](const auto& entry) { return EntryText(*entry.option) == text; });
      if (known == entries.end())
        entries.push_back({&option, name, RulesOf(option, name)});
      else {
        AddCommand(known->commands, name);
        AddRules(known->rules, RulesOf(option, name));
      }
    }
  return entries;
}

std::string OptionsText(const std::vector<const TCommandTable*>& commands) {
  const std::vector<TOptionEntry> entries = OptionEntries(commands);
  TStringList groups;
  for (const TOptionEntry& entry : entries)
    if (std::ranges::find(groups, entry.commands) == groups.end()) groups.push_back(entry.commands);
  TStringList all;
  std::ranges::transform(commands, std::back_inserter(all), [](const auto* command) { return PathText(*command); });
  std::string text;
  for (const std::string& group : groups) {
    text += "## " + (group == JoinList(all, ", ") ? "all commands" : Plain(group)) + "\n\n";
    for (const TOptionEntry& entry : entries)
      if (entry.commands == group) text += EntryWithRules(entry);
  }
  return text;
}

}  // namespace

std::string ManualText(const TCommandTable& program) {
  const std::vector<const TCommandTable*> commands = LeafCommands(program);
  std::string text = kCommandsHead;
  for (const TCommandTable* command : commands) text += CommandEntry(*command);
  text += kOptionsHead + OptionsText(commands);
  return text + kSourcesHead + "```\n" + kSourceForms + "\n```\n";
}

}  // namespace velmora
