// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include <memory>

#include "mysqlnet/MySqlCurrentHandshake.h"
#include "mysqlnet/SessionRig.h"
#include "support/MessageOf.h"
#include "util/Text.h"

namespace velmora {
namespace {

using namespace velmora::testing;

TDialogueCase Login(const std::string& text) { return WrittenCase("logins.txt", text); }

TEST(MySqlSession, NoTransport) {
  TMySqlSession session;
  session.protocol = 2;
  EXPECT_EQ(MessageOf([&] { session.Connect("h", "", "", "", 0, 0, ""); }), "Wrong or unknown protocol");
}

TEST(MySqlSession, EmptyArgumentsTakeWhatIsStored) {
  TSessionRig rig(Login("< {4.0} 2C20 {told}\n> {old head} {old token} 'stored'\n< {ok}").Dialogue(), false);
  rig.session.user = "joe";
  rig.session.password = "secret";
  rig.session.database = "stored";
  rig.session.port = 3307;
  rig.session.Connect("", "", "", "", 0, 0, "");
  rig.ExpectDone();
  EXPECT_EQ(rig.session.port, 3307);
  EXPECT_THAT(rig.dialogue.Timeouts(), ::testing::ElementsAre(7));
}

TEST(MySqlSession, TheCurrentHandshakeIsTakenWhereItIsAnnounced) {
  EXPECT_TRUE(TMySqlCurrentHandshake::IsAnnounced(0xF7FF));
  EXPECT_FALSE(TMySqlCurrentHandshake::IsAnnounced(0x4000));
  EXPECT_TRUE(TMySqlCurrentHandshake::IsAnnounced(0xF7FF & ~0x4000));  // servers that only speak the protocol
}

std::string NewPublicKey() {
  EVP_PKEY* key = EVP_RSA_gen(1024);
  BIO* text = BIO_new(BIO_s_mem());
  PEM_write_bio_PUBKEY(text, key);
  std::string pem(2000, '\0');
  pem.resize(static_cast<std::size_t>(BIO_read(text, pem.data(), static_cast<int>(pem.size()))));
  BIO_free(text);
  EVP_PKEY_free(key);
  return pem;
}

// On a line that others can read the key is asked for, and the password sealed with it: a text of its own each time.
TEST(MySqlSession, SealedWithTheServersKey) {
  const std::string pem = NewPublicKey();
  const std::string sha2 = "< {sha2 greeting}\n> {sha2 login}\n< 01 04\n";
  const std::string sha256 = "< {native greeting}\n> {native login}\n< FE 'sha256_password' 00 {nonce}\n";
  const struct {
    const std::string& begun;
    const char* request;  // for the key; none where it is known
  } cases[] = {{sha2, "> 02\n"}, {sha2, ""}, {sha256, "> 01\n"}, {sha256, ""}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.begun + one.request);
    const bool asks = *one.request != '\0';
    const std::string key = asks ? "< #4 01 '" + StrReplace(pem, "\n", "' 0A '") + "'\n" : "";
    std::string sent;
    TSessionRig rig{TDialogue()};
    rig.session.login_rules = {.guarded = true, .ask_for_key = asks, .public_key = asks ? "" : pem};
    rig.session.net.vio = std::make_unique<TMemoryVio>(
        Login(one.begun + key + (asks ? "< #6" : "< #4") + " {current ok}").Bytes(true), sent);
    rig.Connect();
    const std::string before = Login(one.begun + one.request).Bytes(false) + Int(128, 3) + (asks ? "\5" : "\3");
    EXPECT_EQ(sent.substr(0, before.size()), before);
    EXPECT_EQ(sent.size(), before.size() + 128);
    EXPECT_EQ(sent.find("secret"), std::string::npos);
  }
}

TEST(MySqlSession, EndlessSwitchesEnd) {
  std::string text = "< {native greeting}\n> {native login}\n";
  for (int i = 0; i < 16; ++i) text += "< FE 'mysql_native_password' 00 {nonce}\n> {other native token}\n";
  const TDialogueCase endless = Login(text);
  TSessionRig rig(endless.Dialogue());
  EXPECT_THAT(endless.Play(rig), ::testing::ElementsAre("2012 Error in server handshake"));
  rig.ExpectDone();
}

// --- Commands

TEST(MySqlSession, NumbersBeginAnewWithEachCommand) {
  TSessionRig rig(WrittenCase("queries.txt",
                              "after old\n> #0 02 'other'\n< {old ok}\n> #0 0E\n< FF 1704 'Unknown command'\n> #0 0E\n"
                              "< {old ok}")
                      .Dialogue(),
                  false);
  rig.Connect();
  rig.session.SimpleCommand(2, "other and more", false, 5);
  EXPECT_EQ(MessageOf([&] { rig.session.SimpleCommand(14, "", false, 0); }), "Unknown command");
  rig.session.SimpleCommand(14, "", false, 0);
  rig.ExpectDone();
  EXPECT_EQ(rig.dialogue.Timeouts().back(), 70);
  rig.session.Close();
  EXPECT_TRUE(rig.dialogue.SaidGoodbye());
}

TEST(MySqlSession, HeadOfAResult) {
  TSessionRig rig(WrittenCase("queries.txt", "after old\nquery a\n< 00 00 00 0000\nquery b\n< 02 09").Dialogue(),
                  false);
  rig.Connect();
  rig.Query("a");
  rig.Query("b");
  EXPECT_EQ(rig.session.field_count, 2U);
  EXPECT_EQ(rig.session.extra_info, 9U);
  EXPECT_EQ(rig.session.server_status, 1);  // autocommit is off, so that a transaction begins
  EXPECT_TRUE(rig.session.has_result);
  EXPECT_EQ(MessageOf([&] { rig.Query("c"); }), "Commands out of sync;  You can't run this command now");
  rig.session.Close();
  rig.ExpectDone();
  EXPECT_FALSE(rig.dialogue.SaidGoodbye());  // rows are on the wire
}

}  // namespace
}  // namespace velmora
