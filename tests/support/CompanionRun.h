// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "cli/Companion.h"
#include "support/Transcript.h"

namespace velmora::testing {

// Runs the companion within this process; `ask` answers its questions, and without one there is no terminal.
inline TAnswer RunInProcess(const std::vector<std::string>& arguments, TAsk ask = {},
                            const std::map<std::string, std::string>& environment = {}) {
  std::ostringstream out, err;
  TConsole console{out, err, false, std::move(ask)};
  console.environment = environment;
  const int status = TCompanion().Run(arguments, console);
  return {status, out.str(), err.str()};
}

// Runs a command of the shell; what it writes on standard error is not caught.
inline TAnswer RunInShell(const std::string& command) {
  TAnswer answer;
  FILE* pipe = popen(command.c_str(), "r");
  char buffer[4096];
  while (const std::size_t count = fread(buffer, 1, sizeof buffer, pipe)) answer.out.append(buffer, count);
  answer.status = WEXITSTATUS(pclose(pipe));
  return answer;
}

}  // namespace velmora::testing
