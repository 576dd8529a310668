// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "cli/Command.h"
#include "cli/SourceOptions.h"

namespace velmora {

// The rows of one table, as text or JSON; `limit_` of them at most.
class TRowsCommand final : public TCommand {
 public:
  const char* Name() const override { return "rows"; }
  const char* Summary() const override { return "Show the rows of a table"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  std::string source_, table_;
  std::int64_t limit_ = -1;  // all
  TSourceOptions options_;
  EFormat format_ = EFormat::Text;
};

}  // namespace velmora
