// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/Console.h"

namespace velmora {

class TCommand;

class TCompanion {
 public:
  TCompanion();
  ~TCompanion();  // frees what the command has worked on; a process that ends need not wait for that

  // Runs the companion with the arguments after the program's name and gives the exit status: the command's own, or 2
  // with one line on the console's `err` for arguments that make no command and for any error. To be called once.
  int Run(const std::vector<std::string>& arguments, TConsole& console);

 private:
  std::vector<std::unique_ptr<TCommand>> commands_;
};

}  // namespace velmora
