// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "app/Dialects.h"
#include "cli/Command.h"
#include "cli/SourceOptions.h"
#include "persist/TaskMarks.h"

namespace velmora {

// "new FILE REFERENCE TARGET" writes a task file readable for its owner alone, "show FILE" tells what one holds,
// passwords only when asked for. Neither connects.
class TTaskCommand final : public TCommand {
 public:
  const char* Name() const override { return "task"; }
  const char* Summary() const override { return "Write and show task files, which hold a pair of connections"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  int WriteNew(TConsole& console);
  int Show(TConsole& console);

  bool show_ = false;
  std::string file_, reference_, target_;
  EDialect dialect_ = kDefaultDialect;
  TTaskMarks marks_;
  TForeignWishes foreign_;
  TExactWishes exact_;
  TSourceOptions options_;
  bool show_passwords_ = false;
};

}  // namespace velmora
