// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Console.h"

#include <ostream>

#include "crash/CrashNotes.h"
#include "util/Errors.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

// Further lines are indented: no text of a server can pass for a message of its own.
void Tell(std::ostream& err, const char* kind, const std::string& text) {
  NoteForCrash(kind + text);
  err << kCompanionName << ": " << kind;
  const TStringList lines = LinesOf(text);
  for (std::size_t i = 0; i < lines.size(); ++i) err << (i == 0 ? "" : "\n  ") << ShownText(lines[i]);
  err << '\n';
}

}  // namespace

std::string TConsole::AskSecret(const std::string& question) const {
  return CanAsk() ? ask(ShownText(question), true) : std::string();
}

bool TConsole::Confirm(const std::string& question) const {
  if (!CanAsk()) return false;
  try {
    const std::string answer = Trim(ask(ShownText(question) + " [y/N] ", false));
    return SameText(answer, "y") || SameText(answer, "yes");
  } catch (const EAbort&) {  // the end of the input is no yes
    err << '\n';
    return false;
  }
}

void TConsole::WriteExact(const std::string& text) { out << (out_is_terminal ? ShownLines(text) : text); }

void TConsole::Warn(const std::string& text) { Tell(err, "warning: ", Without(text)); }

void TConsole::Note(const std::string& text) { Tell(err, "note: ", Without(text)); }

void TConsole::Error(const std::string& text) { Tell(err, "", Without(text)); }

}  // namespace velmora
