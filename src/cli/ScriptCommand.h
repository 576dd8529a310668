// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "cli/Command.h"
#include "cli/FleetOptions.h"
#include "cli/SourceOptions.h"
#include "report/FailOn.h"

namespace velmora {

// The script, on the output or in a file that is replaced in one step. Status 2, with the script all the same, when the
// target would not be equal to the reference after it. Changes nothing.
class TScriptCommand final : public TCommand {
 public:
  const char* Name() const override { return "script"; }
  const char* Summary() const override { return "Write the script that makes the target equal to the reference"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  int WriteMany(TConsole& console);

  TPair pair_;
  TFleetOptions fleet_;
  const CLI::App* app_ = nullptr;
  TFailOnWishes fail_on_;
  std::string output_;
  TStringList reports_;
  TSourceOptions options_;
  EFormat format_ = EFormat::Text;
};

}  // namespace velmora
