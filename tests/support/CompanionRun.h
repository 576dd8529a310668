#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "cli/Companion.h"

namespace velmora::testing {

// What a run of the companion gave.
struct TAnswer {
  int status = 0;
  std::string out;
  std::string err;
};

// Runs the companion within this process; `ask` answers its questions, and without one there is no terminal.
inline TAnswer RunInProcess(const std::vector<std::string>& arguments,
                            std::function<std::string(const std::string&, bool)> ask = {}) {
  std::ostringstream out, err;
  TConsole console{out, err, false, std::move(ask)};
  const int status = TCompanion().Run(arguments, console);
  return {status, out.str(), err.str()};
}

}  // namespace velmora::testing
