// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Options that stand in the environment: VELMORA_LOCK_WAIT=30 is --lock-wait 30 of every command that has it.

#include <string>

#include "cli/CommandTables.h"
#include "cli/Console.h"
#include "util/Lists.h"

namespace velmora {

// Help for users.
inline constexpr char kEnvironmentHelp[] =
    "Options may stand in the environment, too: VELMORA_LOCK_WAIT=30 is --lock-wait 30 of every command that has it.\n"
    "A switch is on with 1, yes, on or true; what may be given several times is parted by \";\". The command line "
    "comes\n"
    "first. What consents, or leaves a check out, is read from the command line alone: --yes, --confirm-database,\n"
    "--allow-..., --no-...";

// "VELMORA_LOCK_WAIT" for "--lock-wait"; empty for a short name, and for help and version.
std::string VariableOf(const std::string& option);

// The options of a command that the environment has and its command line has not.
class TEnvironmentOptions {
 public:
  TEnvironmentOptions() = default;  // none
  // `given`: what stands behind the command's words. What does not go with an option that is given, and what needs one
  // that is not, is passed over. Raises for a switch that is neither on nor off.
  TEnvironmentOptions(const TCommandTable& command, const TStringList& given, const TConsole& console);

  const TStringList& Arguments() const { return arguments_; }  // "--lock-wait=30"
  const TStringList& Warnings() const { return warnings_; }    // of variables that are never read
  // A message about options, with the variables in place of those that came from there.
  std::string WithVariables(std::string message) const;

 private:
  void Take(const TOptionTable& option, const std::string& value);

  TStringList arguments_;
  TStringList warnings_;
  TStringList options_;  // "--lock-wait"
};

}  // namespace velmora
