// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

inline constexpr std::size_t kMaxItemSize = std::size_t{16} * 1024 * 1024;  // bytes of text

// A Zip archive, in memory, of one entry named "item". The same text always gives the same bytes.
std::string ZipItem(std::string_view text);
// The text of that entry. Raises the archive library's own message for what is no archive, is damaged or has no such
// entry, and ours for further entries and for a text over kMaxItemSize, which is not unpacked.
std::string UnzipItem(std::string_view archive);

}  // namespace velmora
