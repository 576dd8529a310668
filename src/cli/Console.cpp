#include "cli/Console.h"

#include <ostream>

#include "cli/Secrets.h"
#include "util/Text.h"

namespace velmora {

bool TConsole::Confirm(const std::string& question) const {
  if (!CanAsk()) return false;
  const std::string answer = Trim(ask(question + " [y/N] ", false));
  return SameText(answer, "y") || SameText(answer, "yes");
}

void TConsole::Warn(const std::string& text) { err << kCompanionName << ": warning: " << WithoutSecrets(text) << '\n'; }

void TConsole::Note(const std::string& text) { err << kCompanionName << ": note: " << WithoutSecrets(text) << '\n'; }

void TConsole::Error(const std::string& text) { err << kCompanionName << ": " << WithoutSecrets(text) << '\n'; }

}  // namespace velmora
