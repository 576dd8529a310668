#pragma once

// What a comparison found, for people.

#include <iosfwd>

#include "app/Application.h"
#include "cli/Console.h"

namespace velmora {

inline constexpr char kIdentical[] = "Databases are identical. Nothing to synchronize.\n";

// The actions by table, and their number. With `failed` what was found before the failure, without a result.
void PrintComparison(const TApplication& app, bool failed, std::ostream& out);

// What the exact dialect leaves alone, could not read, and could not prove.
void TellExactNotes(const TApplication& app, TConsole& console);

// Whether the actions may run: none is unsafe, or `allowed` says so. Otherwise they are listed.
bool UnsafeActionsAllowed(const TApplication& app, bool allowed, TConsole& console);

}  // namespace velmora
