// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace velmora {

// A view's creation text for people: servers print it on one line. Line ends come before the clauses of its query, the
// columns and joins; nothing else changes. A text that has lines already, or cannot be read, stays as it is.
std::string ShownView(const std::string& text);

}  // namespace velmora
