// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace velmora {

// What stands within a line as it is, whatever Markdown or HTML would make of it. Behind what begins a link to an
// account, an address or a number stands a blank of no width.
std::string PlainMarkdown(std::string_view text);

}  // namespace velmora
