// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/ScrambledText.h"

#include <cstdint>

namespace velmora {

namespace {

constexpr std::uint32_t kSeed = 0x5EED1E55;
constexpr std::uint32_t kMultiplier = 134775813;
constexpr std::uint64_t kRange = 128;
constexpr std::uint64_t kHighBit = 128;

}  // namespace

// The high bit of each byte is flipped always, the others by a linear congruential generator that starts anew each
// time.
std::string DecodeStr(std::string_view scrambled) {
  std::string text(scrambled);
  std::uint32_t seed = kSeed;
  for (char& c : text) {
    seed = seed * kMultiplier + 1;
    const std::uint64_t random = (seed * kRange) >> 32;
    c = static_cast<char>(static_cast<unsigned char>(c) ^ (random | kHighBit));
  }
  return text;
}

}  // namespace velmora
