// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the commands of the companion have in common.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/Dialects.h"
#include "cli/Console.h"
#include "cli/Manners.h"
#include "exact/compare/Collations.h"
#include "exact/run/ExactWishes.h"
#include "foreign/ForeignWishes.h"
#include "util/Counted.h"
#include "util/Lists.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library named it
class App;
}

namespace velmora {

// Exit statuses.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitDifferent = 1;  // of `compare`, of `lint` for what is grave, and for --fail-on
inline constexpr int kExitFailure = 2;

enum class EFormat { Text, Json };

// One class per command. Results go to the console's output, warnings and questions to its error side.
class TCommand {
 public:
  virtual ~TCommand() = default;
  virtual const char* Name() const = 0;
  virtual const char* Summary() const = 0;  // one line of help
  virtual void Declare(CLI::App& app) = 0;  // binds arguments and options to this object
  // Works on what they have filled, once. Gives the exit status; raises EVelmora where a source, a file or a statement
  // fails, which is kExitFailure.
  virtual int Execute(TConsole& console) = 0;
};

std::vector<std::unique_ptr<TCommand>> MakeCommands();
// The whole command line of the companion: each command is one below `app`, in their order.
void DeclareProgram(CLI::App& app, const std::vector<std::unique_ptr<TCommand>>& commands, TManners& manners);

// An option that is one of a few words, case ignored; `choose` gets the number of the word.
void DeclareChoice(CLI::App& app, const std::string& name, const TStringList& words, const std::string& help,
                   const std::function<void(std::size_t)>& choose);

// An option that is a whole number from `least` to `most`; a fault says so.
void DeclareNumber(CLI::App& app, const std::string& name, std::int64_t least, std::int64_t most,
                   const std::string& help, const std::function<void(std::int64_t)>& take);

// Arguments and options that several commands take.
void DeclareFormat(CLI::App& app, EFormat& format);
// The two databases of a comparison, or one task file that holds both.
struct TPair {
  std::string reference;            // or the task file
  std::string target;               // empty with a task file
  std::string targets{};            // a file that lists many instead; empty for none
  std::optional<EDialect> dialect;  // as given; otherwise that of the task file
  TCollationMap collations;         // the exact dialect alone has it
  TForeignWishes foreign;           // of a reference that is not MySQL, before those of the task file
  TExactWishes exact;               // likewise before those of the task file
  bool target_alone = false;        // one source is enough, and is the target: nothing is compared
  bool allow_empty_reference = false;
  bool verify_on_server = false;  // of the commands that can; the exact dialect alone has it, and the next one
  bool via_server = false;        // the reference's statements are read by the target's server
};
void DeclarePair(CLI::App& app, TPair& pair);
// What can be asked for a source that is not MySQL, as far as it needs no target.
void DeclareMapping(CLI::App& app, TForeignWishes& wishes);
void DeclareForeign(CLI::App& app, TForeignWishes& wishes);                        // all of it
void DeclareExact(CLI::App& app, TExactWishes& wishes);                            // but what is about runs
void DeclareExactOfRun(CLI::App& app, TExactWishes& wishes);                       // that alone
void DeclareExact(CLI::App& app, const TStringList& words, TExactWishes& wishes);  // these of its options
void DeclareDialect(CLI::App& app, const std::string& help, const std::function<void(EDialect)>& choose);
// Behind the text about a reference without tables.
inline constexpr char kAllowEmpty[] = "; if that is meant, give --allow-empty-reference";
void DeclareAllowEmpty(CLI::App& app, TPair& pair);  // --allow-empty-reference
void DeclareScratch(CLI::App& app, TPair& pair);     // --via-server, --verify-on-server

}  // namespace velmora
