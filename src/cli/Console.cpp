#include "cli/Console.h"

#include <ostream>

#include "util/Text.h"

namespace velmora {

bool TConsole::Confirm(const std::string& question) const {
  if (!CanAsk()) return false;
  const std::string answer = Trim(ask(question + " [y/N] ", false));
  return SameText(answer, "y") || SameText(answer, "yes");
}

void TConsole::Warn(const std::string& text) { err << kCompanionName << ": warning: " << text << '\n'; }

void TConsole::Note(const std::string& text) { err << kCompanionName << ": note: " << text << '\n'; }

void TConsole::Error(const std::string& text) { err << kCompanionName << ": " << text << '\n'; }

}  // namespace velmora
