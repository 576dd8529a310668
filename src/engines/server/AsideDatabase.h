// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>

#include "engines/server/IBOClient.h"

namespace velmora {

// A connection like `inner`, which is not connected, whose calls are done aside (util/Aside.h). After a call that was
// left it is not connected. `prepare` is called before each attempt to connect, by whoever connects.
std::unique_ptr<TIBODatabase> NewAsideDatabase(std::unique_ptr<TIBODatabase> inner, std::function<void()> prepare);

}  // namespace velmora
