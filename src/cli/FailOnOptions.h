// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Options that say what makes a command fail, and how that is told.

#include <vector>

#include "cli/Console.h"
#include "cli/Json.h"
#include "report/FailOn.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library named it
class App;
}

namespace velmora {

void DeclareRules(CLI::App& app, TLintWishes& rules);      // --rule
void DeclareFailOn(CLI::App& app, TFailOnWishes& wishes);  // --fail-on, and the one above

// For `failed_on` of documents.
TJson JsonOf(const std::vector<TFailure>& failures);
void TellFailures(const std::vector<TFailure>& failures, TConsole& console);

}  // namespace velmora
