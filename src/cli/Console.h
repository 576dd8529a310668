#pragma once

// The terminal, pipe or test that the companion talks to: results on `out`, all else on `err`.

#include <iosfwd>
#include <string>

namespace velmora {

inline constexpr char kCompanionName[] = "velmora-cli";

struct TConsole {
  std::ostream& out;
  std::ostream& err;
  bool err_is_terminal = false;  // progress shows on terminals only

  void Warn(const std::string& text);   // "velmora-cli: warning: TEXT"
  void Note(const std::string& text);   // "velmora-cli: note: TEXT"
  void Error(const std::string& text);  // "velmora-cli: TEXT"
};

}  // namespace velmora
