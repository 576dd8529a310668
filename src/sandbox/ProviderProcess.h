// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Providers over drivers of other makers, in a process of their own: a driver that breaks off, as some do when a server
// talks nonsense, ends that process.

#include <functional>
#include <memory>
#include <string>

#include "formats/port/Provider.h"
#include "sandbox/ChildProcess.h"

namespace velmora {

// A provider like that of `make`, in a child process that lives from Initialize to Uninitialize. `source` names what it
// connects to, in the errors of a child that dies or gives no answer; after such an error it is not open, and what it
// had in a transaction the server rolls back.
std::unique_ptr<TOLEDBProvider> ProvideInOwnProcess(std::function<std::unique_ptr<TOLEDBProvider>()> make,
                                                    const std::string& source, const TChildLimits& limits);

}  // namespace velmora
