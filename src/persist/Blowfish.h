// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

inline constexpr std::size_t kBlowfishBlock = 8;

// Blowfish in ECB mode, without initial vector; a block is two big-endian words, the left half first. `bytes` are a
// whole number of blocks, `key` is 8 to 56 bytes long. Both raise where they are not.
std::string BlowfishEncrypted(std::string_view bytes, std::string_view key);
std::string BlowfishDecrypted(std::string_view bytes, std::string_view key);

}  // namespace velmora
