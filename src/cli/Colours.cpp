// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Colours.h"

#include <array>
#include <string_view>

namespace velmora {

namespace {

// In the order of the inks. Of the eight colours that every terminal has, which its owner has chosen to be readable.
constexpr std::array<std::string_view, 9> kCodes = {"", "32", "33", "31", "1", "32", "1;33", "36", "1;31"};

}  // namespace

std::string TColours::operator()(EInk ink, const std::string& text) const {
  if (!on_ || ink == EInk::Plain || text.empty()) return text;
  return "\x1b[" + std::string(kCodes[static_cast<std::size_t>(ink)]) + "m" + text + "\x1b[0m";
}

}  // namespace velmora
