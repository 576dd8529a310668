// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlTokens.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <memory>

#include "support/MessageOf.h"
#include "support/MySqlDialogue.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using testing::Wire;

const std::string kScramble = "abcdefghijklmnopqrst";

// Worked out by hand-written versions of the published schemes in another language.
TEST(MySqlTokens, KnownValues) {
  EXPECT_EQ(OldToken("secret", kScramble), std::string("TLTVQOT]") + '\0');
  EXPECT_EQ(OldToken("se cr\tet", kScramble), OldToken("secret", kScramble.substr(0, 8)));
  EXPECT_EQ(OldToken("", kScramble), std::string(1, '\0'));
  EXPECT_EQ(NewToken("secret", kScramble), Wire("8817c50fa779daef010ee7577825b0847df9842e"));
  EXPECT_EQ(Sha2Token("secret", kScramble), Wire("c76e2898612a4cf042c77fa8c4702c4c64c0c2c557c53c4d75595aaa6abae809"));
  std::string nonce;
  for (char c = 0; c < 32; ++c) nonce += c;
  EXPECT_EQ(Ed25519Token("secret", nonce), Wire("546c3e9311d19ee389d1ae5d945821bfe459423910136f16b3bd2ae89fd7d63b"
                                                "449e689f4be812891a85b8f999076446d92adb83d0707215aaa60b5a23220907"));
}

struct TFree {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  void operator()(BIO* bio) const { BIO_free(bio); }
};
using TKey = std::unique_ptr<EVP_PKEY, TFree>;

unsigned char* Bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

// A password that is as long as a seed signs as that seed does.
TEST(MySqlTokens, Ed25519IsTheUsualSignatureOfASeed) {
  for (int i = 0; i < 20; ++i) {
    std::string seed(32, static_cast<char>('a' + i));
    std::string nonce(32, static_cast<char>(i * 11)), signature(64, '\0');
    const TKey key(EVP_PKEY_new_raw_private_key(EVP_PKEY_ED25519, nullptr, Bytes(seed), seed.size()));
    const std::unique_ptr<EVP_MD_CTX, TFree> context(EVP_MD_CTX_new());
    std::size_t size = signature.size();
    ASSERT_EQ(EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key.get()), 1);
    ASSERT_EQ(EVP_DigestSign(context.get(), Bytes(signature), &size, Bytes(nonce), nonce.size()), 1);
    EXPECT_EQ(Ed25519Token(seed, nonce), signature);
  }
}

TEST(MySqlTokens, RsaPasswordOpensWithTheKeyOnly) {
  const TKey key(EVP_RSA_gen(1024));
  const std::unique_ptr<BIO, TFree> text(BIO_new(BIO_s_mem()));
  ASSERT_EQ(PEM_write_bio_PUBKEY(text.get(), key.get()), 1);
  std::string pem(2000, '\0');
  pem.resize(static_cast<std::size_t>(BIO_read(text.get(), pem.data(), static_cast<int>(pem.size()))));

  std::string sealed = RsaPassword("a password beyond the nonce", kScramble, pem);
  const std::unique_ptr<EVP_PKEY_CTX, TFree> context(EVP_PKEY_CTX_new(key.get(), nullptr));
  std::string opened(sealed.size(), '\0');
  std::size_t size = opened.size();
  ASSERT_EQ(EVP_PKEY_decrypt_init(context.get()), 1);
  ASSERT_EQ(EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING), 1);
  ASSERT_EQ(EVP_PKEY_decrypt(context.get(), Bytes(opened), &size, Bytes(sealed), sealed.size()), 1);
  EXPECT_EQ(XorTexts(opened.substr(0, size), kScramble + kScramble), "a password beyond the nonce" + std::string(1, 0));

  for (const std::string& bad : {std::string(), std::string("no key"), pem.substr(0, 100)})
    EXPECT_THROW(RsaPassword("secret", kScramble, bad), EMySqlException);
  RsaPassword(std::string(85, 'x'), kScramble, pem);
  EXPECT_THAT(testing::MessageOf([&] { RsaPassword(std::string(86, 'x'), kScramble, pem); }),
              ::testing::HasSubstr("it has 86 bytes, and the server's key seals no more than 85"));
}

}  // namespace
}  // namespace velmora
