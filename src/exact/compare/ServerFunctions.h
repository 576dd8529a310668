// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Functions that not every server has.

#include <string_view>

#include "exact/compare/ServerForm.h"

namespace velmora {

enum class EFunctionOn {
  Everywhere,  // as far as is known
  Here,        // but not on every server
  Elsewhere    // this server does not have it
};

// `name` is in any case, and of a function that the server brings along.
EFunctionOn FunctionOn(const TServerTraits& server, std::string_view name);

}  // namespace velmora
