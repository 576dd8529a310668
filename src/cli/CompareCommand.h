// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "cli/Command.h"
#include "cli/FleetOptions.h"
#include "cli/SourceOptions.h"
#include "report/FailOn.h"

namespace velmora {

class TPairRun;

// The differences as a tree per table, or one JSON document. Status 1 when the two are not identical, tables that were
// skipped and objects beside tables included; with --fail-on only for what is of the kinds asked for. Changes nothing.
class TCompareCommand final : public TCommand {
 public:
  TCompareCommand();
  ~TCompareCommand() override;
  const char* Name() const override { return "compare"; }
  const char* Summary() const override { return "Show what differs between a reference and a target"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  int CompareMany(TConsole& console);

  TPair pair_;
  TFleetOptions fleet_;
  const CLI::App* app_ = nullptr;
  TSourceOptions options_;
  EFormat format_ = EFormat::Text;
  TStringList reports_;
  TFailOnWishes fail_on_;
  std::unique_ptr<TPairRun> run_;  // a process that ends need not free it
};

}  // namespace velmora
