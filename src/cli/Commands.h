#pragma once

// The commands of the companion, one class each.

#include <memory>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/SourceOptions.h"

namespace velmora {

class TPairRun;

class TCompareCommand final : public TCommand {
 public:
  TCompareCommand();
  ~TCompareCommand() override;
  const char* Name() const override { return "compare"; }
  const char* Summary() const override { return "Show what differs between a reference and a target"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  TPair pair_;
  TSourceOptions options_;
  EFormat format_ = EFormat::Text;
  std::unique_ptr<TPairRun> run_;  // a process that ends need not free it
};

class TScriptCommand final : public TCommand {
 public:
  const char* Name() const override { return "script"; }
  const char* Summary() const override { return "Write the script that makes the target equal to the reference"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  TPair pair_;
  std::string output_;
  TSourceOptions options_;
  EFormat format_ = EFormat::Text;
};

class TSyncCommand final : public TCommand {
 public:
  const char* Name() const override { return "sync"; }
  const char* Summary() const override { return "Run the script, or one of a file, on the target"; }
  void Declare(CLI::App& app) override;
  int Execute(TConsole& console) override;

 private:
  bool Prepare(TPairRun& run, TConsole& console, int& status);
  bool MayRun(TPairRun& run, const std::string& script, TConsole& console);
  TPair pair_;
  std::string script_;
  TSourceOptions options_;
  bool allow_unsafe_ = false;
  bool no_row_checks_ = false;
  int row_check_time_ = 30;  // seconds
  bool yes_ = false;
};

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
  TSourceOptions options_;
  bool show_passwords_ = false;
};

}  // namespace velmora
