// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Tables as the program understands them: of a source, of the statements of a file, and of both.

#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/SourceOptions.h"

namespace velmora {

// Columns, keys and constraints of all tables, or of those named, in the order of the source.
class TSchemaCommand final : public TCommand {
 public:
  const char* Name() const override { return "schema"; }
  const char* Summary() const override { return "Show tables as the program understands them"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  std::string source_;
  std::vector<std::string> tables_;
  TSourceOptions options_;
  EFormat format_ = EFormat::Text;
};

// The store that the statements of a file fill, starting from nothing; no server is needed.
class TParseCommand final : public TCommand {
 public:
  const char* Name() const override { return "parse"; }
  const char* Summary() const override { return "Show what the statements of a file make of an empty database"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  std::string file_;
  EFormat format_ = EFormat::Text;
};

// The store of a database after the statements of a file, which are read and not run.
class TReplayCommand final : public TCommand {
 public:
  const char* Name() const override { return "replay"; }
  const char* Summary() const override { return "Show what the statements of a file would make of a database"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  std::string source_, file_;
  TSourceOptions options_;
  EFormat format_ = EFormat::Text;
};

}  // namespace velmora
