// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What "alter view", "alter event", "alter procedure" and "alter function" of a script make of the text before.

#include <optional>
#include <string>
#include <string_view>

#include "core/CreationTexts.h"

namespace velmora {

// The creation text of a view that `statement` says anew: what it leaves unsaid of definer, algorithm and security is
// as it was in `text`. Raises where one of them cannot be read.
std::string AlteredView(std::string_view text, std::string_view statement);

// Whether the object is known after the statement: characteristics of routines, and "enable", "disable", "rename to" of
// events are applied to its text and name. Else the object is as before.
bool AlterObject(std::string_view statement, TOtherObject& object);

}  // namespace velmora
