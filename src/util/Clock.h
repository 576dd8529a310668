// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to the time of day: local time in the program, a fixed one in tests.

#include "util/Dates.h"

namespace velmora {

class TClock {
 public:
  virtual ~TClock() = default;
  virtual TDateTime Now() const = 0;  // local date and time
};

const TClock& SystemClock();

}  // namespace velmora
