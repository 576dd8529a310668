// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "cli/Command.h"

namespace velmora {

// The statements that a run of a file would send, with their places; nothing is connected.
class TSplitCommand final : public TCommand {
 public:
  const char* Name() const override { return "split"; }
  const char* Summary() const override { return "Show the statements that a run of a script would execute"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  std::string file_;
  bool raw_ = false;
  EFormat format_ = EFormat::Text;
};

}  // namespace velmora
