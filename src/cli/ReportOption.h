// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "util/Lists.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library named it
class App;
class Option;
}  // namespace CLI

namespace velmora {

class TPairRun;

// --report FILE, several times; `what` is written: "what was found".
CLI::Option* DeclareReports(CLI::App& app, const std::string& what, TStringList& files);

// Writes them of what was compared and generated; an error is reported as TPairRun does. Nothing where there are none.
std::optional<std::string> WriteReports(TPairRun& run, const TStringList& files);

}  // namespace velmora
