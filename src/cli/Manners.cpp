// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Manners.h"

#include <CLI/CLI.hpp>

#include "cli/Command.h"
#include "util/Text.h"

namespace velmora {

namespace {

TColours ColoursFor(bool is_terminal, const TManners& manners, const TConsole& console) {
  if (manners.colour != EColourUse::Auto) return TColours(manners.colour == EColourUse::Always);
  const bool unwanted = !console.Variable("NO_COLOR").empty() || InList(console.Variable("TERM"), {"", "dumb"});
  return TColours(is_terminal && !unwanted);
}

}  // namespace

void DeclareManners(CLI::App& app, TManners& manners) {
  DeclareChoice(app, "--color", {"auto", "always", "never"},
                "Colours: auto: on a terminal that knows them, unless NO_COLOR is set; always; never",
                [&manners](std::size_t choice) { manners.colour = static_cast<EColourUse>(choice); });
  app.add_flag("--quiet", manners.quiet,
               "Results and errors alone: no progress, no notes, and of warnings those alone that tell why the result "
               "is what it is");
}

void Adopt(const TManners& manners, TConsole& console) {
  console.quiet = manners.quiet;
  console.out_colours = ColoursFor(console.out_is_terminal, manners, console);
  console.err_colours = ColoursFor(console.err_is_terminal, manners, console);
}

}  // namespace velmora
