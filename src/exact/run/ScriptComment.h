// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <string>
#include <utility>

namespace velmora {

// A line of a script that is a comment: names may hold what would end it.
inline std::string ScriptComment(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  return "-- " + std::move(text);
}

}  // namespace velmora
