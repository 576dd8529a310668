// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlTokens.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <sodium.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

#include "mysqlnet/MySqlErrors.h"

namespace velmora {

namespace {

const unsigned char* Bytes(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }
unsigned char* Bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

std::string Digest(std::string_view text, const EVP_MD* kind) {
  std::string digest(static_cast<std::size_t>(EVP_MD_get_size(kind)), '\0');
  if (EVP_Digest(text.data(), text.size(), Bytes(digest), nullptr, kind, nullptr) != 1)
    throw ClientError(kBadHandshake);
  return digest;
}

std::string Sha256(std::string_view text) { return Digest(text, EVP_sha256()); }
std::string Sha512(std::string_view text) { return Digest(text, EVP_sha512()); }

std::string Joined(std::string_view first, std::string_view second) { return std::string(first).append(second); }

// --- Before 4.1
constexpr std::size_t kOldScramble = 8;
constexpr std::uint32_t kOldMask = 0x7FFFFFFF;

struct TOldHash {
  std::uint32_t first = 1345345333;
  std::uint32_t second = 305419889;
};

TOldHash OldHash(std::string_view text) {
  TOldHash hash;
  std::uint32_t add = 7;
  for (const char c : WithoutBlanks(text)) {
    const auto value = static_cast<std::uint8_t>(c);
    hash.first ^= ((hash.first & 63) + add) * value + (hash.first << 8);
    hash.second += (hash.second << 8) ^ hash.first;
    add += value;
  }
  return {hash.first & kOldMask, hash.second & kOldMask};
}

class TOldGenerator {
 public:
  TOldGenerator(std::uint64_t first, std::uint64_t second) : first_(first % kModulus), second_(second % kModulus) {}
  // From 0 to 30.
  int Next() {
    first_ = (first_ * 3 + second_) % kModulus;
    second_ = (first_ + second_ + 33) % kModulus;
    return static_cast<int>(static_cast<double>(first_) / static_cast<double>(kModulus) * 31);
  }

 private:
  static constexpr std::uint64_t kModulus = 0x3FFFFFFF;

  std::uint64_t first_;
  std::uint64_t second_;
};

// --- Ed25519
constexpr std::size_t kScalar = crypto_core_ed25519_SCALARBYTES;
using TScalar = std::array<unsigned char, kScalar>;
using TPoint = std::array<unsigned char, crypto_core_ed25519_BYTES>;

TScalar Reduced(std::string_view text) {
  std::array<unsigned char, crypto_core_ed25519_NONREDUCEDSCALARBYTES> wide{};
  std::copy_n(text.begin(), std::min(text.size(), wide.size()), wide.begin());
  TScalar scalar;
  crypto_core_ed25519_scalar_reduce(scalar.data(), wide.data());
  return scalar;
}

// Raises where the scalar is 0, which no digest gives in practice.
std::string PointOf(const unsigned char* scalar) {
  std::string point(crypto_core_ed25519_BYTES, '\0');
  if (crypto_scalarmult_ed25519_base_noclamp(Bytes(point), scalar) != 0) throw ClientError(kBadHandshake);
  return point;
}

// --- RSA
struct TFree {
  void operator()(BIO* bio) const { BIO_free(bio); }
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
};

constexpr std::size_t kPadding = 42;  // bytes that sealing adds at least
constexpr char kLongPassword[] =
    "it has %d bytes, and the server's key seals no more than %d; over TLS, which needs no key, it may be longer";

std::unique_ptr<EVP_PKEY, TFree> PublicKey(std::string_view pem) {
  const std::unique_ptr<BIO, TFree> text(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  std::unique_ptr<EVP_PKEY, TFree> key(PEM_read_bio_PUBKEY(text.get(), nullptr, nullptr, nullptr));
  if (!key || EVP_PKEY_get_base_id(key.get()) != EVP_PKEY_RSA) throw ClientError(kBadHandshake);
  return key;
}

}  // namespace

std::string Sha1(std::string_view text) { return Digest(text, EVP_sha1()); }

std::string XorTexts(std::string_view text, std::string_view other) {
  std::string result(text.substr(0, other.size()));
  for (std::size_t i = 0; i < result.size(); ++i) result[i] = static_cast<char>(result[i] ^ other[i]);
  return result;
}

std::string WithoutBlanks(std::string_view password) {
  std::string text(password);
  std::erase_if(text, [](char c) { return c == ' ' || c == '\t'; });
  return text;
}

std::string OldToken(std::string_view password, std::string_view scramble) {
  constexpr char kFirstCharacter = 64;
  if (password.empty()) return std::string(1, '\0');
  const TOldHash secret = OldHash(password);
  const TOldHash message = OldHash(scramble.substr(0, kOldScramble));
  TOldGenerator generator(secret.first ^ message.first, secret.second ^ message.second);
  std::string token;
  for (std::size_t i = 0; i < kOldScramble; ++i) token += static_cast<char>(generator.Next() + kFirstCharacter);
  const int extra = generator.Next();
  for (char& c : token) c = static_cast<char>(c ^ extra);
  return token + '\0';
}

std::string NewToken(std::string_view password, std::string_view scramble) {
  const std::string stage1 = Sha1(password);
  return XorTexts(Sha1(Joined(scramble, Sha1(stage1))), stage1);
}

std::string Sha2Token(std::string_view password, std::string_view nonce) {
  const std::string stage1 = Sha256(password);
  return XorTexts(stage1, Sha256(Joined(Sha256(stage1), nonce)));
}

// The published signature, except that the password of any length stands where a key's seed would: libraries take
// seeds of one length only, so that the scalars are multiplied here.
std::string Ed25519Token(std::string_view password, std::string_view nonce) {
  if (sodium_init() < 0) throw ClientError(kBadHandshake);
  std::string secret = Sha512(password);
  secret[0] = static_cast<char>(secret[0] & 0xF8);
  secret[kScalar - 1] = static_cast<char>((secret[kScalar - 1] & 0x7F) | 0x40);
  const std::string_view key = std::string_view(secret).substr(0, kScalar);
  const std::string_view prefix = std::string_view(secret).substr(kScalar);

  const TScalar random = Reduced(Sha512(Joined(prefix, nonce)));
  const std::string commitment = PointOf(random.data());
  const TScalar challenge = Reduced(Sha512(commitment + PointOf(Bytes(key)) + std::string(nonce)));
  TScalar answer;
  crypto_core_ed25519_scalar_mul(answer.data(), challenge.data(), Reduced(key).data());
  crypto_core_ed25519_scalar_add(answer.data(), answer.data(), random.data());
  return commitment + std::string(answer.begin(), answer.end());
}

std::string RsaPassword(std::string_view password, std::string_view nonce, std::string_view public_key) {
  std::string masked = std::string(password) + '\0';
  for (std::size_t i = 0; i < masked.size() && !nonce.empty(); ++i)
    masked[i] = static_cast<char>(masked[i] ^ nonce[i % nonce.size()]);
  const auto key = PublicKey(public_key);
  const std::unique_ptr<EVP_PKEY_CTX, TFree> context(EVP_PKEY_CTX_new(key.get(), nullptr));
  std::size_t size = static_cast<std::size_t>(EVP_PKEY_get_size(key.get()));
  if (masked.size() + kPadding > size)
    throw ClientError(kLoginRefused, Format(kLongPassword, password.size(), size - std::min(size, kPadding + 1)));
  std::string sealed(size, '\0');
  if (!context || EVP_PKEY_encrypt_init(context.get()) != 1 ||
      EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING) != 1 ||
      EVP_PKEY_encrypt(context.get(), Bytes(sealed), &size, Bytes(masked), masked.size()) != 1)
    throw ClientError(kBadHandshake);
  sealed.resize(size);
  return sealed;
}

}  // namespace velmora
