// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bit>
#include <concepts>
#include <cstring>

namespace velmora {

// The number that stands at `bytes`, lowest byte first.
template <std::integral T>
T LittleAt(const char* bytes) {
  static_assert(std::endian::native == std::endian::little);
  T number;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

}  // namespace velmora
