// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

#include "cli/Command.h"

namespace velmora {

// What goes along with the program and is made of its own options: completions of shells, the manual's middle part.
class TGenerateCommand final : public TCommand {
 public:
  const char* Name() const override { return "generate"; }
  const char* Summary() const override { return "Write what a shell completes, or the commands for the manual page"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  std::size_t form_ = 0;
};

}  // namespace velmora
