// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MessageOf.h"

#include "util/Errors.h"

namespace velmora::testing {

std::string MessageOf(const std::function<void()>& body) {
  try {
    body();
  } catch (const EVelmora& error) {
    return error.what();
  }
  return "nothing raised";
}

}  // namespace velmora::testing
