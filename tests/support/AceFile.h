// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace velmora::testing {

// A database of Jet 4 as one of ACE, from version 2 (Access 2007) on: what later programs write in the head of files
// that are otherwise as before.
inline std::string AsAce(std::string bytes, char version = 2) {
  constexpr char kName[] = "Standard ACE DB";
  bytes.replace(4, sizeof kName, kName, sizeof kName);
  bytes[0x14] = version;
  return bytes;
}

}  // namespace velmora::testing
