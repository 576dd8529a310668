#pragma once

// Readers over libraries that were not made for damaged files run in a process of their own: what crashes, hangs or
// eats memory there becomes an error message here.

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "engines/oledb/FileReader.h"

namespace velmora {

struct TReaderLimits {
  std::chrono::milliseconds silence{0};  // the longest wait for an answer
  std::uint64_t memory = 0;              // bytes that the process may have beyond what this one has
};

// Generous ones for a file of `size` bytes.
TReaderLimits ReaderLimits(std::uint64_t size);

// A reader like that of `open`, in a child process that lives as long as it. Opens at once and raises what `open`
// raises. When the child dies, runs out of memory or does not answer in time, the call raises an error that names
// `path` and `library`, and the next call begins with a new child.
std::unique_ptr<TFileReader> ReadInOwnProcess(TFileReaderMaker open, const std::string& path,
                                              const std::string& library, const TReaderLimits& limits);

}  // namespace velmora
