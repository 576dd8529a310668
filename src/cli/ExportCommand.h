// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "cli/Command.h"
#include "cli/SourceOptions.h"
#include "exact/run/ExactWishes.h"

namespace velmora {

// A database written as a folder of scripts. Tells each file that it added, changed or removed.
class TExportCommand final : public TCommand {
 public:
  const char* Name() const override { return "export"; }
  const char* Summary() const override {
    return "Write a database as a folder with a file for each table, view, routine";
  }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  std::string source_;
  std::string folder_;
  TExactWishes exact_;
  TSourceOptions options_;
  EFormat format_ = EFormat::Text;
};

}  // namespace velmora
