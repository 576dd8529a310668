// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/Json.h"
#include "cli/SourceOptions.h"
#include "exact/run/TextMaker.h"

namespace velmora {

// What the tables of a source that is not MySQL would be there, without a target.
class TMappingCommand final : public TCommand {
 public:
  const char* Name() const override { return "mapping"; }
  const char* Summary() const override { return "Show what the tables of a source that is not MySQL become in MySQL"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  std::string source_;
  std::string version_;
  TForeignWishes wishes_;
  TSourceOptions options_;
  EFormat format_ = EFormat::Text;
};

TJson MappingJson(const std::vector<TMadeColumn>& columns);
TJson UnmadeJson(const std::vector<TUnmadeElement>& elements);

}  // namespace velmora
