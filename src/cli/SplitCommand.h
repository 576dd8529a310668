#pragma once

// The statements of a script.

#include <string>

#include "cli/Command.h"

namespace velmora {

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
