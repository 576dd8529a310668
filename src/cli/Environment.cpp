// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Environment.h"

#include <algorithm>
#include <cctype>
#include <utility>
#include <vector>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kPrefix[] = "VELMORA_";
constexpr char kNeverRead[] = "%s is not read from the environment: give %s on the command line";
constexpr char kPassword[] =
    "VELMORA_PASSWORD is not read: other processes can see the environment; give a file by --password-file";
constexpr char kNoSwitch[] = "%s: \"%s\" is none of 1, yes, on, true, 0, no, off, false";
constexpr std::string_view kSeparator = ";";

// What a person has to say each time anew.
bool IsSaidEachTime(const std::string& option) {
  return InList(option, {"--yes", "--confirm-database", "--show-passwords"}) || option.starts_with("--allow-") ||
         option.starts_with("--no-");
}

bool IsLong(const std::string& name) { return name.starts_with("--"); }

std::string LongName(const TOptionTable& option) {
  const auto name = std::ranges::find_if(option.names, IsLong);
  return name == option.names.end() ? std::string() : *name;
}

bool IsGiven(const std::string& name, const TStringList& given) {
  return std::ranges::any_of(given, [&](const std::string& argument) {
    const bool with_value = IsLong(name) ? argument.starts_with(name + "=") : argument.starts_with(name);
    return argument == name || with_value;
  });
}

bool AnyGiven(const TStringList& names, const TStringList& given) {
  return std::ranges::any_of(names, [&](const std::string& name) { return IsGiven(name, given); });
}

bool IsOn(const std::string& variable, const std::string& value) {
  if (IndexOf({"1", "yes", "on", "true"}, value) != kNotInList) return true;
  if (IndexOf({"0", "no", "off", "false"}, value) != kNotInList) return false;
  RaiseError(Format(kNoSwitch, variable, value));
}

}  // namespace

std::string VariableOf(const std::string& option) {
  if (!IsLong(option) || InList(option, {"--help", "--version"})) return {};
  std::string name = kPrefix;
  for (const char letter : option.substr(2))
    name += letter == '-' ? '_' : static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
  return name;
}

TEnvironmentOptions::TEnvironmentOptions(const TCommandTable& command, const TStringList& given,
                                         const TConsole& console) {
  if (AnyGiven({"-h", "--help", "--version"}, given)) return;
  std::vector<std::pair<const TOptionTable*, std::string>> found;
  TStringList known = given;
  for (const TOptionTable& option : command.options) {
    const std::string name = LongName(option);
    const std::string value = console.Variable(VariableOf(name));
    if (name == "--password-file" && !console.Variable("VELMORA_PASSWORD").empty()) warnings_.emplace_back(kPassword);
    if (value.empty() || AnyGiven(option.names, given) || AnyGiven(option.excludes, given)) continue;
    if (IsSaidEachTime(name)) {
      warnings_.push_back(Format(kNeverRead, VariableOf(name), name));
      continue;
    }
    found.emplace_back(&option, value);
    known.push_back(name);
  }
  for (const auto& [option, value] : found)
    if (std::ranges::all_of(option->needs, [&](const std::string& name) { return IsGiven(name, known); }))
      Take(*option, value);
}

void TEnvironmentOptions::Take(const TOptionTable& option, const std::string& value) {
  const std::string name = LongName(option);
  if (option.value.empty()) {
    if (!IsOn(VariableOf(name), value)) return;
    arguments_.push_back(name);
  } else {
    TStringList values = {value};
    if (option.repeats) SplitText(kSeparator, value, values);
    for (const std::string& one : values)
      if (!one.empty()) arguments_.emplace_back(name).append("=").append(one);
  }
  options_.push_back(name);
}

std::string TEnvironmentOptions::WithVariables(std::string message) const {
  const auto ends_name = [&](std::size_t at) {
    return at >= message.size() || (message[at] != '-' && !std::isalnum(static_cast<unsigned char>(message[at])));
  };
  for (const std::string& option : options_)
    for (std::size_t at = message.find(option); at != std::string::npos; at = message.find(option, at + 1))
      if (ends_name(at + option.size())) message.replace(at, option.size(), VariableOf(option));
  return message;
}

}  // namespace velmora
