// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The terminal, pipe or test that the companion talks to: results on `out`, all else on `err`.

#include <functional>
#include <iosfwd>
#include <map>
#include <string>

#include "cli/Colours.h"
#include "cli/Secrets.h"

namespace velmora {

inline constexpr char kCompanionName[] = "velmora-cli";
inline constexpr char kOutOfMemory[] = "out of memory";

// Whether a warning or note may be left out where nobody wants to hear more than results and errors.
enum class EWeight {
  Aside,
  Decides  // the result is what it is because of this
};

struct TConsole {
  std::ostream& out;
  std::ostream& err;
  bool err_is_terminal = false;  // progress shows on terminals only
  // Asks on the terminal and gives the line that is answered; with `secret` it is not shown while it is typed. Empty
  // where there is no terminal.
  std::function<std::string(const std::string& question, bool secret)> ask;

  bool out_is_terminal = false;  // which must not be handed control sequences, in whatever text they stand
  TSecrets secrets = {};         // of the arguments
  bool in_is_terminal = false;   // whose user has to type what is read from standard input
  std::map<std::string, std::string> environment = {};
  TColours out_colours = {};
  TColours err_colours = {};
  bool quiet = false;

  std::string Variable(const std::string& name) const;  // of the environment; empty where it has none
  bool CanAsk() const { return ask != nullptr; }
  std::string AskSecret(const std::string& question) const;
  bool Confirm(const std::string& question) const;  // yes only if it is said

  std::string Without(std::string_view text) const { return secrets.Without(text); }  // passwords
  // A text of many lines that a file or a pipe gets byte by byte.
  void WriteExact(const std::string& text);

  // Passwords in these texts are left out, and control characters shown by their numbers.
  void Warn(const std::string& text, EWeight weight = EWeight::Aside);  // "velmora-cli: warning: TEXT"
  void Note(const std::string& text, EWeight weight = EWeight::Aside);  // "velmora-cli: note: TEXT"
  void Error(const std::string& text);                                  // "velmora-cli: TEXT"

 private:
  void Tell(EInk ink, const std::string& kind, const std::string& text) const;
};

}  // namespace velmora
