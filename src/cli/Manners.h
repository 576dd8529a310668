// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How the companion talks, whatever the command: the options that all commands have.

#include "cli/Console.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library named it
class App;
}

namespace velmora {

enum class EColourUse { Auto, Always, Never };

struct TManners {
  EColourUse colour = EColourUse::Auto;
  bool quiet = false;
};

void DeclareManners(CLI::App& app, TManners& manners);

// What the console is to do from here on. Left to itself it colours what goes to a terminal, unless NO_COLOR in its
// environment has a value or TERM says that the terminal knows no colours.
void Adopt(const TManners& manners, TConsole& console);

}  // namespace velmora
