// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Readers over libraries that were not made for damaged files, in a process of their own.

#include <cstdint>
#include <memory>
#include <string>

#include "formats/port/FileReader.h"
#include "sandbox/ChildProcess.h"

namespace velmora {

// Generous limits for a file of `size` bytes.
TChildLimits ReaderLimits(std::uint64_t size);

// A reader like that of `open`, in a child process that lives as long as it. Opens at once and raises what `open`
// raises. When the child dies, runs out of memory or does not answer in time, the call raises an error that names
// `path` and `library`, and the next call begins with a new child.
std::unique_ptr<TFileReader> ReadInOwnProcess(const TFileReaderMaker& open, const std::string& path,
                                              const std::string& library, const TChildLimits& limits);

}  // namespace velmora
