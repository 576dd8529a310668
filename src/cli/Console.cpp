// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Console.h"

#include <ostream>

#include "crash/CrashNotes.h"
#include "util/Errors.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

// Further lines are indented: no text of a server can pass for a message of its own.
void TConsole::Tell(EInk ink, const std::string& kind, const std::string& text) const {
  const std::string shown = Without(text);
  NoteForCrash(kind.empty() ? shown : kind + " " + shown);
  const std::string name = std::string(kCompanionName) + ":";
  err << (kind.empty() ? err_colours(ink, name) : name + " " + err_colours(ink, kind)) << ' ';
  const TStringList lines = LinesOf(shown);
  for (std::size_t i = 0; i < lines.size(); ++i) err << (i == 0 ? "" : "\n  ") << ShownText(lines[i]);
  err << '\n';
}

std::string TConsole::Variable(const std::string& name) const {
  const auto found = environment.find(name);
  return found == environment.end() ? std::string() : found->second;
}

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

void TConsole::Warn(const std::string& text, EWeight weight) {
  if (!quiet || weight == EWeight::Decides) Tell(EInk::Warning, "warning:", text);
}

void TConsole::Note(const std::string& text, EWeight weight) {
  if (!quiet || weight == EWeight::Decides) Tell(EInk::Note, "note:", text);
}

void TConsole::Error(const std::string& text) { Tell(EInk::Bad, "", text); }

}  // namespace velmora
