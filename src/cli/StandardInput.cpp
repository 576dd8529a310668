// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/StandardInput.h"

#include <algorithm>

#include "util/Errors.h"
#include "util/Files.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kTwice[] = "Only one argument can be read from standard input (-): give the others as files";
constexpr char kReadsFromTerminal[] =
    "waiting for standard input, which is the terminal: Ctrl+D at the beginning of a line ends it";

bool IsRead(const std::string& option) {
  return option == "--script" || option.ends_with("-password-file") || option.ends_with("-defaults-file");
}

bool IsStandardInput(std::string_view source) {
  return source == kStandardInput || source.starts_with(std::string(kStandardInput) + "#");
}

// Whether the next argument is the value of this one.
bool TakesNext(const TCommandTable& command, const std::string& argument) {
  return std::ranges::any_of(command.options, [&](const TOptionTable& option) {
    return !option.value.empty() && std::ranges::find(option.names, argument) != option.names.end();
  });
}

std::size_t CountInputs(const TCommandTable& command, const TStringList& arguments) {
  std::size_t count = 0;
  std::string before;
  for (const std::string& argument : arguments) {
    const std::size_t equals = argument.starts_with("--") ? argument.find('=') : std::string::npos;
    const bool with_value = equals != std::string::npos;
    const std::string option = with_value ? argument.substr(0, equals) : before;
    const bool is_read = with_value ? IsRead(option) : !TakesNext(command, option) || IsRead(option);
    if (is_read && IsStandardInput(with_value ? argument.substr(equals + 1) : argument)) ++count;
    before = argument;
  }
  return count;
}

}  // namespace

void CheckStandardInput(const TCommandTable& command, const TStringList& arguments, TConsole& console) {
  const std::size_t count = CountInputs(command, arguments);
  if (count > 1) RaiseError(kTwice);
  if (count == 1 && console.in_is_terminal) console.Note(kReadsFromTerminal);
}

}  // namespace velmora
