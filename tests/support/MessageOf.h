// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>

namespace velmora::testing {

// The message of the error that `body` raises, or "nothing raised".
std::string MessageOf(const std::function<void()>& body);

}  // namespace velmora::testing
