// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Delimited text as most programs write it: RFC 4180. Values may stand in double quotes; within these a separator and
// an end of line are letters, and two quotes are one.

#include <functional>
#include <string>
#include <vector>

namespace velmora {

struct TDelimitedValue {
  std::string text;
  bool quoted = false;
};

// Gives `take` each record of the file, but for empty lines. An empty `separator` is never found. Raises
// "Cannot read %s: %s", and for quotes that nobody closes, with the line where they begin.
void ReadDelimitedRecords(const std::string& path, const std::string& separator,
                          const std::function<void(const std::vector<TDelimitedValue>& values)>& take);

}  // namespace velmora
