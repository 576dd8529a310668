// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/TaskPack.h"

#include "persist/Blowfish.h"
#include "persist/ScrambledText.h"
#include "persist/ZipItem.h"

namespace velmora {

namespace {

constexpr std::string_view kScrambledKey =
    "\xd4\x28\x76\x3d\x8e\x85\x7d\x03\x7e\x0d\xec\x67\x8b\xb4\x2e\x72\x3d\x71\x68\xb9";
static_assert(kScrambledKey.size() == 20);

// 1 to 8 bytes, each of them their number: a text of whole blocks gets one more.
std::string Padded(std::string bytes) {
  const std::size_t count = kBlowfishBlock - bytes.size() % kBlowfishBlock;
  return bytes.append(count, static_cast<char>(count));
}

// Deliberate: what is no padding stays, and it is for the archive reader to make something of it.
std::string_view Unpadded(std::string_view bytes) {
  const auto count = static_cast<unsigned char>(bytes.back());
  if (count == 0 || count > kBlowfishBlock) return bytes;
  const std::string_view tail = bytes.substr(bytes.size() - count);
  if (tail.find_first_not_of(bytes.back()) != std::string_view::npos) return bytes;
  return bytes.substr(0, bytes.size() - count);
}

}  // namespace

std::string TaskFileKey() { return DecodeStr(kScrambledKey); }

std::string PackTask(std::string_view xml) { return BlowfishEncrypted(Padded(ZipItem(xml)), TaskFileKey()); }

std::string UnpackTask(std::string_view packed) {
  if (packed.empty()) return {};
  const std::string archive = BlowfishDecrypted(packed, TaskFileKey());
  return UnzipItem(Unpadded(archive));
}

}  // namespace velmora
