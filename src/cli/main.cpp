// SPDX-License-Identifier: GPL-3.0-or-later
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Companion.h"
#include "cli/Secrets.h"
#include "cli/Terminal.h"
#include "crash/CrashWatch.h"
#include "persist/UserFolder.h"
#include "util/Text.h"
#include "util/Version.h"

namespace {

// Lists of processes show what stands in the argument vector.
void HideSecrets(const std::vector<std::string>& arguments, char** argv) {
  const auto secrets = velmora::SecretsOfArguments(arguments);
  for (std::size_t i = 0; i < secrets.size(); ++i)
    for (const velmora::TTextRange& secret : secrets[i]) std::fill_n(argv[i + 1] + secret.start, secret.length, 'x');
}

// What may stand there for this program.
std::map<std::string, std::string> Environment() {
  std::map<std::string, std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    const std::size_t end = std::min(text.find('='), text.size());
    const std::string_view name = text.substr(0, end);
    if (end < text.size() && (name.starts_with("VELMORA_") || velmora::InList(name, {"NO_COLOR", "TERM"})))
      variables.emplace(name, text.substr(end + 1));
  }
  return variables;
}

// Memory to tell of the want of it, let go when it is first wanting.
constexpr std::size_t kReserve = 16 << 20;
std::unique_ptr<char[]> reserve;

void TellOfMemory() {
  reserve.reset();
  std::set_new_handler(nullptr);
  throw std::bad_alloc();
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  velmora::WatchForCrashes({velmora::kCompanionName, velmora::VersionText(), velmora::CrashFolder(), {}});
  reserve = std::make_unique_for_overwrite<char[]>(kReserve);
  std::set_new_handler(TellOfMemory);
  velmora::TConsole console{std::cout, std::cerr, isatty(STDERR_FILENO) != 0, {}};
  console.out_is_terminal = isatty(STDOUT_FILENO) != 0;
  console.in_is_terminal = isatty(STDIN_FILENO) != 0;
  console.environment = Environment();
  if (velmora::HasTerminal()) console.ask = velmora::AskOnTerminal;
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  HideSecrets(arguments, argv);
  velmora::TCompanion companion;
  int status = companion.Run(arguments, console);
  std::cout.flush();
  if (!std::cout) {
    console.Error("cannot write to standard output");
    status = 2;
  }
  std::quick_exit(status);  // what the command has worked on is not taken apart
}
