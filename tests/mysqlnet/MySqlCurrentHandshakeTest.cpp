#include "mysqlnet/MySqlCurrentHandshake.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include <memory>

#include "mysqlnet/MySqlErrors.h"
#include "mysqlnet/MySqlTokens.h"
#include "mysqlnet/SessionRig.h"
#include "support/MessageOf.h"

namespace velmora {
namespace {

using namespace velmora::testing;

constexpr char kNative[] = "mysql_native_password";
constexpr char kSha2[] = "caching_sha2_password";
constexpr std::uint32_t kFlags = 0x8A205;
constexpr std::uint32_t kFlagsWithDatabase = kFlags | 8;
const std::string kNul(1, '\0');
const std::string kOther = "TSRQPONMLKJIHGFEDCBA";
const std::string kLong = "0123456789abcdef0123456789abcde" + kNul;  // a nonce may end in a NUL

TDialogue Begun(const std::string& plugin = kNative) {
  const std::string token = plugin == kSha2 ? Sha2Token("secret", kScramble) : NewToken("secret", kScramble);
  return TDialogue()
      .Server(CurrentGreeting(kCurrent, plugin))
      .Client(Packet(1, CurrentLogin(kFlagsWithDatabase, "joe", token, "db", plugin)));
}

std::string SwitchTo(const std::string& plugin, const std::string& nonce) {
  return Packet(2, "\xFE" + plugin + kNul + nonce);
}

TEST(MySqlCurrentHandshake, IsTakenWhereAnnouncedAndWanted) {
  EXPECT_TRUE(TMySqlCurrentHandshake::IsAnnounced(0xF7FF));
  EXPECT_FALSE(TMySqlCurrentHandshake::IsAnnounced(0x4000));
  EXPECT_FALSE(TMySqlCurrentHandshake::IsAnnounced(0x0200));
  TSessionRig older(TDialogue()
                        .Server(OldGreeting(kFirst41))
                        .Client(Packet(1, Int(0xE08D, 4) + Int(1 << 30, 4) + "joe" + kNul +
                                              Text(NewToken("secret", kScramble)) + "db"))
                        .Server(OldOk(2)),
                    true);
  older.Connect();
  older.ExpectDone();
}

TEST(MySqlCurrentHandshake, Responses) {
  const std::string native = NewToken("secret", kScramble);
  struct {
    const char* name;
    std::uint32_t offered, asked;
    std::string plugin, password, database;
    std::uint32_t flags;
    std::string token, sent_plugin;
  } const cases[] = {
      {"native", kCurrent, 0, kNative, "secret", "db", kFlagsWithDatabase, native, kNative},
      {"no database", kCurrent, 0, kNative, "secret", "", kFlags, native, kNative},
      {"no password", kCurrent, 0, kNative, "", "db", kFlagsWithDatabase, "", kNative},
      {"sha2", kCurrent, 0, kSha2, "secret", "db", kFlagsWithDatabase, Sha2Token("secret", kScramble), kSha2},
      {"sha2, no password", kCurrent, 0, kSha2, "", "db", kFlagsWithDatabase, "", kSha2},
      {"a way unknown here", kCurrent, 0, "auth_gssapi", "secret", "db", kFlagsWithDatabase, native, kNative},
      {"compression, results", kCurrent, 0x20020, kNative, "secret", "", kFlags | 0x20020, native, kNative},
      {"neither offered", kCurrent & ~0x20020U, 0x20020, kNative, "secret", "", kFlags, native, kNative},
      {"later end of rows", kCurrent | 0x1000000, 0, kNative, "secret", "", kFlags | 0x1000000, native, kNative},
      {"what may not be asked for", kCurrent, 0x810D90, kNative, "secret", "", kFlags, native, kNative},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    TSessionRig rig(TDialogue()
                        .Server(CurrentGreeting(one.offered, one.plugin))
                        .Client(Packet(1, CurrentLogin(one.flags, "joe", one.token, one.database, one.sent_plugin)))
                        .Server(Packet(2, Zeros(3) + Int(0x4002, 2) + Zeros(2))),
                    true);
    rig.session.client_flag = one.asked;
    rig.Connect(one.password, one.database);
    rig.ExpectDone();
    EXPECT_EQ(rig.session.client_flag, one.flags);
    EXPECT_EQ(rig.session.server_status, 0x4002);
    EXPECT_EQ(rig.session.net.compress, (one.flags & 0x20) != 0);
    EXPECT_EQ(rig.session.scramble, kScramble);
  }
}

// Servers from 4.1.1 to 5.1 do not name the way to log in, and neither does the response.
TEST(MySqlCurrentHandshake, WithoutNamedWays) {
  std::string login = CurrentLogin(0xA20D, "joe", NewToken("secret", kScramble), "db", "");
  login.pop_back();
  TSessionRig rig(TDialogue()
                      .Server(CurrentGreeting(kCurrent & 0xFFFF, ""))
                      .Client(Packet(1, login))
                      .Server(Packet(2, "\xFE"))
                      .Client(Packet(3, OldToken("secret", kScramble)))
                      .Server(CurrentOk(4)),
                  true);
  rig.Connect();
  rig.ExpectDone();
}

TEST(MySqlCurrentHandshake, Switches) {
  struct {
    const char* name;
    std::string request, answer;
  } const cases[] = {
      {"native", SwitchTo(kNative, kOther + kNul), NewToken("secret", kOther)},
      {"old, by name", SwitchTo("mysql_old_password", kOther + kNul), OldToken("secret", kOther)},
      {"old, without a name", Packet(2, "\xFE"), OldToken("secret", kScramble)},
      {"sha2", SwitchTo(kSha2, kOther + kNul), Sha2Token("secret", kOther)},
      {"ed25519", SwitchTo("client_ed25519", kLong), Ed25519Token("secret", kLong)},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    TSessionRig rig(Begun().Server(one.request).Client(Packet(3, one.answer)).Server(CurrentOk(4)), true);
    rig.Connect();
    rig.ExpectDone();
  }
}

TEST(MySqlCurrentHandshake, Sha2) {
  TSessionRig quick(Begun(kSha2).Server(Packet(2, "\1\3") + CurrentOk(3)), true);
  quick.Connect();
  quick.ExpectDone();

  // The whole password, over a line that is private.
  class TPrivateVio final : public TMySqlVio {
   public:
    explicit TPrivateVio(std::unique_ptr<TMySqlVio> inner) : inner_(std::move(inner)) {}
    void SetTimeout(int seconds) override { inner_->SetTimeout(seconds); }
    void Connect() override {}
    void Close() override {}
    std::size_t Read(char* buffer, std::size_t offset, std::size_t count) override {
      return inner_->Read(buffer, offset, count);
    }
    std::size_t Write(const char* buffer, std::size_t offset, std::size_t count) override {
      return inner_->Write(buffer, offset, count);
    }
    bool IsPrivate() const override { return true; }

   private:
    std::unique_ptr<TMySqlVio> inner_;
  };
  TSessionRig full(Begun(kSha2).Server(Packet(2, "\1\4")).Client(Packet(3, "secret" + kNul)).Server(CurrentOk(4)),
                   true);
  full.session.net.vio = std::make_unique<TPrivateVio>(std::move(full.session.net.vio));
  full.Connect();
  full.ExpectDone();
}

// On a line that others can read the key is asked for, and the password sealed with it: a text of its own each time.
TEST(MySqlCurrentHandshake, Sha2WithTheServersKey) {
  EVP_PKEY* key = EVP_RSA_gen(1024);
  BIO* text = BIO_new(BIO_s_mem());
  PEM_write_bio_PUBKEY(text, key);
  std::string pem(2000, '\0');
  pem.resize(static_cast<std::size_t>(BIO_read(text, pem.data(), static_cast<int>(pem.size()))));
  BIO_free(text);
  EVP_PKEY_free(key);

  std::string sent;
  TMySqlSession session;
  session.protocol = 2;
  session.current_protocol = true;
  session.net.vio = std::make_unique<TMemoryVio>(
      CurrentGreeting(kCurrent, kSha2) + Packet(2, "\1\4") + Packet(4, "\1" + pem) + CurrentOk(6), sent);
  session.Connect("host", "joe", "secret", "db", 0, 0, "");
  const std::string login =
      Packet(1, CurrentLogin(kFlagsWithDatabase, "joe", Sha2Token("secret", kScramble), "db", kSha2));
  EXPECT_EQ(sent.substr(0, login.size()), login);
  EXPECT_EQ(sent.substr(login.size(), 5), Packet(3, "\2"));
  EXPECT_EQ(sent.substr(login.size() + 5, 4), Int(128, 3) + "\5");
  EXPECT_EQ(sent.size(), login.size() + 5 + 4 + 128);
  EXPECT_EQ(sent.find("secret"), std::string::npos);
}

TEST(MySqlCurrentHandshake, RefusedOrBroken) {
  struct {
    const char* name;
    TDialogue dialogue;
    int number;
    const char* text;
  } const cases[] = {
      {"greeting", TDialogue().Server(ErrorPacket(0, 1040, "#08004Too many")), 1040, "Too many"},
      {"reply", Begun().Server(ErrorPacket(2, 1045, "#28000Denied")), 1045, "Denied"},
      {"after a switch",
       Begun()
           .Server(Packet(2, "\xFE"))
           .Client(Packet(3, OldToken("secret", kScramble)))
           .Server(ErrorPacket(4, 1045, "#28000No")),
       1045, "No"},
      {"a way unknown here", Begun().Server(SwitchTo("mysql_clear_password", "")), 2059,
       "The server asks for a way to log in that is not known here: mysql_clear_password"},
      {"short nonce", Begun().Server(SwitchTo(kNative, "abc")), 2012, "Error in server handshake"},
      {"short nonce of a signature", Begun().Server(SwitchTo("client_ed25519", kOther)), 2012,
       "Error in server handshake"},
      {"more data without need", Begun().Server(Packet(2, "\1\4")), 2012, "Error in server handshake"},
      {"more data of no kind", Begun(kSha2).Server(Packet(2, "\1\5")), 2012, "Error in server handshake"},
      {"no key", Begun(kSha2).Server(Packet(2, "\1\4")).Client(Packet(3, "\2")).Server(Packet(4, "\1key")), 2012,
       "Error in server handshake"},
      {"nothing", Begun().Server(Packet(2, "")), 2027, "Malformed packet"},
      {"nonsense", Begun().Server(Packet(2, "\2")), 2012, "Error in server handshake"},
      {"greeting without the rest", TDialogue().Server(Packet(0, CurrentGreeting(kCurrent).substr(4, 30))), 2012,
       "Error in server handshake"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    TSessionRig rig(one.dialogue, true);
    try {
      rig.Connect();
      ADD_FAILURE() << "connected";
    } catch (const EMySqlException& error) {
      EXPECT_EQ(error.Number(), one.number);
      EXPECT_STREQ(error.what(), one.text);
    }
    rig.ExpectDone();
  }
}

TEST(MySqlCurrentHandshake, EndlessSwitchesEnd) {
  TDialogue dialogue = Begun();
  for (int i = 2; i < 34; i += 2)
    dialogue.Server(Packet(i, "\xFE" + std::string(kNative) + kNul + kOther))
        .Client(Packet(i + 1, NewToken("secret", kOther)));
  TSessionRig rig(dialogue, true);
  EXPECT_EQ(MessageOf([&] { rig.Connect(); }), "Error in server handshake");
  rig.ExpectDone();
}

}  // namespace
}  // namespace velmora
