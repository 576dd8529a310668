#include <unistd.h>

#include <iostream>

#include "cli/Companion.h"
#include "cli/Terminal.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  velmora::TConsole console{std::cout, std::cerr, isatty(STDERR_FILENO) != 0, {}};
  if (velmora::HasTerminal()) console.ask = velmora::AskOnTerminal;
  const int status = velmora::RunCompanion({argv + 1, argv + argc}, console);
  std::cout.flush();
  if (!std::cout) {
    console.Error("cannot write to standard output");
    return 2;
  }
  return status;
}
