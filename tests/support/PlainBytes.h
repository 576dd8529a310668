// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bytes that files are put together of.

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmora::testing {

// The number in so many bytes, lowest byte first.
inline std::string Little(std::uint64_t value, std::size_t width) {
  std::string bytes;
  for (std::size_t i = 0; i < width; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
  return bytes;
}

// The same, highest byte first.
inline std::string Big(std::uint64_t value, std::size_t width) {
  const std::string bytes = Little(value, width);
  return {bytes.rbegin(), bytes.rend()};
}

// Cut where it is longer.
inline std::string Padded(std::string text, std::size_t size, char pad = '\0') {
  text.resize(size, pad);
  return text;
}

}  // namespace velmora::testing
