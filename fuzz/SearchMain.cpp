// SPDX-License-Identifier: GPL-3.0-or-later

// One harness for libFuzzer, which searches for inputs that take new ways through the sources.

#include <cstddef>
#include <cstdint>

#include "Harnesses.h"
#include "Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  velmora::fuzzing::Try([&] { velmora::fuzzing::VELMORA_HARNESS(input); });
  return 0;
}
