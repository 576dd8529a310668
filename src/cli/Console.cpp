#include "cli/Console.h"

#include <ostream>

namespace velmora {

void TConsole::Warn(const std::string& text) { err << kCompanionName << ": warning: " << text << '\n'; }

void TConsole::Note(const std::string& text) { err << kCompanionName << ": note: " << text << '\n'; }

void TConsole::Error(const std::string& text) { err << kCompanionName << ": " << text << '\n'; }

}  // namespace velmora
