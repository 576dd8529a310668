// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "util/Lists.h"

namespace velmora {

// What the desktop program was started with.
struct TProgramArguments {
  std::string task_file;  // to be opened, by its whole path; empty: none
  std::string answer;     // what is printed instead of starting the program; empty: it starts
  int status = 0;         // the exit status after the answer: 2, with the answer for standard error, after a fault
};

// `arguments` come without the program's name. Help and version are answered whatever else is asked; the rest is to be
// judged without what Qt takes for itself.
TProgramArguments ReadProgramArguments(const TStringList& arguments);

}  // namespace velmora
