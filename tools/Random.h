// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>

namespace velmora::testing {

// The same numbers on every machine and with every library.
class TRandom {
 public:
  explicit TRandom(std::uint64_t seed) : engine_(seed) {}
  std::size_t Below(std::size_t limit) { return static_cast<std::size_t>(engine_() % limit); }
  bool Chance(std::size_t percent) { return Below(100) < percent; }
  template <class Container>
  auto& Pick(Container& container) {
    return container[Below(std::size(container))];
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace velmora::testing
