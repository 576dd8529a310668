#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "cli/Companion.h"
#include "cli/Secrets.h"
#include "cli/Terminal.h"

namespace {

// Lists of processes show what stands in the argument vector.
void HideSecrets(int argc, char** argv) {
  for (int i = 1; i < argc; ++i)
    for (const velmora::TTextRange& secret : velmora::SecretsIn(argv[i]))
      std::fill_n(argv[i] + secret.start, secret.length, 'x');
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  velmora::TConsole console{std::cout, std::cerr, isatty(STDERR_FILENO) != 0, {}};
  if (velmora::HasTerminal()) console.ask = velmora::AskOnTerminal;
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  HideSecrets(argc, argv);
  int status = velmora::RunCompanion(arguments, console);
  std::cout.flush();
  if (!std::cout) {
    console.Error("cannot write to standard output");
    status = 2;
  }
  std::quick_exit(status);  // what the command has kept is not taken apart
}
