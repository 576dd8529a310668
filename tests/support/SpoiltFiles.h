#pragma once

// Files with faults made by chance, read in a process of its own by a reader over a library that may not survive them.

#include <functional>
#include <memory>
#include <string>

#include "sandbox/ReaderProcess.h"

namespace velmora::testing {

struct TSpoiltFiles {
  std::string path;  // of each of them in turn
  std::function<std::string(unsigned seed)> bytes;
  std::function<std::unique_ptr<TFileReader>(const std::string& path)> open;
};

// How many files the reader did what with.
struct TSpoiltOutcome {
  int read = 0;     // gave every table
  int refused = 0;  // raised an error
  int crashed = 0;
  int silent = 0;
};

// Reads files 0 to `count` - 1. Expects errors to name the file, a tenth of the files or more to be read, a tenth or
// more to be refused, and fewer than a tenth to end the process.
TSpoiltOutcome ReadSpoiltFiles(const TSpoiltFiles& files, int count, const TChildLimits& limits);

}  // namespace velmora::testing
