// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What of the target's session a script changes for its statements and puts back at its end, which one that ends early
// does not come to.

#include <string>

#include "core/DBConn.h"

namespace velmora {

class TRunSession {
 public:
  // Asks the target, which outlives this object, for what is set.
  explicit TRunSession(TDBConn& target);
  // Lets tables go that are locked, and sets what was set. Raises nothing: what ended the run matters more. A
  // connection that is lost is left alone.
  void PutBack();

 private:
  TDBConn& target_;
  std::string statement_;  // that sets it
};

}  // namespace velmora
