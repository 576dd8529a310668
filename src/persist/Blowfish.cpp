// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/Blowfish.h"

#include <nettle/blowfish.h>

#include <cstdint>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kBadKey[] = "A Blowfish key cannot have %d bytes";
constexpr char kBadSize[] = "%d bytes of cipher text are no whole number of blocks of %d bytes";

const std::uint8_t* Octets(std::string_view bytes) { return reinterpret_cast<const std::uint8_t*>(bytes.data()); }

template <class Cipher>
std::string Run(Cipher cipher, std::string_view bytes, std::string_view key) {
  if (key.size() < BLOWFISH_MIN_KEY_SIZE || key.size() > BLOWFISH_MAX_KEY_SIZE) RaiseError(Format(kBadKey, key.size()));
  if (bytes.size() % kBlowfishBlock != 0) RaiseError(Format(kBadSize, bytes.size(), kBlowfishBlock));
  blowfish_ctx context;
  blowfish_set_key(&context, key.size(), Octets(key));  // tells weak keys apart, which serve all the same
  std::string result(bytes.size(), '\0');
  cipher(&context, bytes.size(), reinterpret_cast<std::uint8_t*>(result.data()), Octets(bytes));
  return result;
}

}  // namespace

std::string BlowfishEncrypted(std::string_view bytes, std::string_view key) {
  return Run(blowfish_encrypt, bytes, key);
}

std::string BlowfishDecrypted(std::string_view bytes, std::string_view key) {
  return Run(blowfish_decrypt, bytes, key);
}

}  // namespace velmora
