// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A program that ends by a fatal error writes a report into a folder of its user, says where, and ends as it would have
// without us: by the same signal, so that its starter and the system's own collector of core files see what they would.

#include <string>

#include "util/Lists.h"

namespace velmora {

struct TCrashWatch {
  std::string program;    // as it is called: "velmora-cli"
  std::string version;    // "2.0.0"
  std::string folder;     // takes the reports; is made with the first one, for the user alone. Empty: reports go to
                          // standard error alone
  TStringList libraries;  // of which the report tells the version: "Qt 6.4.2"
};

// Watches from here on for what ends a program: a signal of a fault (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS),
// std::terminate, and an abort, as of a failed assertion. To be called once, by the thread that runs main; of
// other threads, those whose stacks are used up leave a report where they have a TCrashStack.
//
// A report holds the program and its build, the system, what is known of the reason, the stack, the last notes
// (CrashNotes.h) and the loaded libraries with their addresses; no passwords, no values, no contents of memory.
void WatchForCrashes(const TCrashWatch& watch);

// Why the program is about to end; for libraries that tell it before they abort. Quoted values are left out, as
// WithoutValues has it.
void TellCrashReason(std::string_view reason);

}  // namespace velmora
