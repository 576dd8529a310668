// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "util/Lists.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library named it
class App;
class Option;
}  // namespace CLI

namespace velmora {

class TPairRun;

// --report FILE, several times; `what` is written: "what was found".
CLI::Option* DeclareReports(CLI::App& app, const std::string& what, TStringList& files);

// Raises where two of the files that options name are one, of which one would be written over. An empty name is none.
using TNamedFiles = std::vector<std::pair<std::string_view, std::string>>;  // the option, its file
void CheckFilesApart(TNamedFiles files, const TStringList& reports);

// Writes them of what was compared and generated; an error is reported as TPairRun does. Nothing where there are none.
std::optional<std::string> WriteReports(TPairRun& run, const TStringList& files);

}  // namespace velmora
