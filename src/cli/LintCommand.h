// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "cli/Command.h"
#include "cli/SourceOptions.h"
#include "lint/LintSource.h"

namespace velmora {

struct TLintReport;

// What a structure has that an administrator would want to know of. Status 1 where a finding is as grave as
// --fail-level says, 2 where something could not be read.
class TLintCommand final : public TCommand {
 public:
  const char* Name() const override { return "lint"; }
  const char* Summary() const override { return "Tell what is doubtful in the structure of a MySQL database"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  void Look(TConsole& console, TLintReport& report);

  std::string source_;
  TExactWishes exact_;
  TLintWishes rules_;
  ESeverity fail_level_ = ESeverity::Warning;
  bool list_rules_ = false;
  EFormat format_ = EFormat::Text;
  TStringList reports_;
  TSourceOptions options_;
};

}  // namespace velmora
