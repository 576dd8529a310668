#include "mysqlnet/MySqlCurrentHandshake.h"

#include <gmock/gmock.h>
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
constexpr char kSha256[] = "sha256_password";
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

// A line that nobody else can read.
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

TEST(MySqlCurrentHandshake, IsTakenWhereAnnouncedAndWanted) {
  EXPECT_TRUE(TMySqlCurrentHandshake::IsAnnounced(0xF7FF));
  EXPECT_FALSE(TMySqlCurrentHandshake::IsAnnounced(0x4000));
  EXPECT_TRUE(TMySqlCurrentHandshake::IsAnnounced(0xF7FF & ~0x4000));  // servers that only speak the protocol
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

  TSessionRig full(Begun(kSha2).Server(Packet(2, "\1\4")).Client(Packet(3, "secret" + kNul)).Server(CurrentOk(4)),
                   true);
  full.session.net.vio = std::make_unique<TPrivateVio>(std::move(full.session.net.vio));
  full.Connect();
  full.ExpectDone();
}

// On a line that others can read the key is asked for, and the password sealed with it: a text of its own each time.
TEST(MySqlCurrentHandshake, SealedWithTheServersKey) {
  const std::string pem = NewPublicKey();
  const struct {
    const char* way;
    std::string begun;    // by the server, behind the login
    std::string request;  // for the key; none where it is known
  } cases[] = {{kSha2, Packet(2, "\1\4"), "\2"},
               {kSha2, Packet(2, "\1\4"), ""},
               {kNative, SwitchTo(kSha256, kOther + kNul), "\1"},
               {kNative, SwitchTo(kSha256, kOther + kNul), ""}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.begun + one.request);
    const bool asks = !one.request.empty();
    const std::string key = asks ? Packet(4, "\1" + pem) : "";
    std::string sent;
    TMySqlSession session;
    session.protocol = 2;
    session.current_protocol = true;
    session.login_rules = {.guarded = true, .ask_for_key = asks, .public_key = asks ? "" : pem};
    session.net.vio = std::make_unique<TMemoryVio>(
        CurrentGreeting(kCurrent, one.way) + one.begun + key + CurrentOk(asks ? 6 : 4), sent);
    session.Connect("host", "joe", "secret", "db", 0, 0, "");
    const std::string token = one.way == kSha2 ? Sha2Token("secret", kScramble) : NewToken("secret", kScramble);
    const std::string before = Packet(1, CurrentLogin(kFlagsWithDatabase, "joe", token, "db", one.way)) +
                               (asks ? Packet(3, one.request) : "") + Int(128, 3) + (asks ? "\5" : "\3");
    EXPECT_EQ(sent.substr(0, before.size()), before);
    EXPECT_EQ(sent.size(), before.size() + 128);
    EXPECT_EQ(sent.find("secret"), std::string::npos);
  }
}

// What can be turned back into the password leaves only where nobody else hears it, or where the user says so.
TEST(MySqlCurrentHandshake, GuardedLogins) {
  const struct {
    const char* name;
    std::string plugin, request;
    std::string answer;   // on a private line, or with the next one; empty: never
    std::string allowed;  // what the user has to allow; empty: nothing
    bool private_does;
  } cases[] = {
      {"sha2, full", kSha2, Packet(2, "\1\4"), "secret" + kNul, "--get-server-public-key", true},
      {"sha256", kNative, SwitchTo(kSha256, kOther + kNul), "secret" + kNul, "--server-public-key", true},
      {"old", kNative, SwitchTo("mysql_old_password", kOther + kNul), OldToken("secret", kOther), "--allow-old-login",
       true},
      {"old, without a name", kNative, Packet(2, "\xFE"), OldToken("secret", kScramble), "--allow-old-login", true},
      {"as it is", kNative, SwitchTo("mysql_clear_password", ""), "secret" + kNul, "--allow-old-login", false},
      {"native", kNative, SwitchTo(kNative, kOther + kNul), NewToken("secret", kOther), "", true},
  };
  for (const auto& one : cases) {
    for (const bool is_private : {false, true}) {
      for (const bool old : {false, true}) {
        SCOPED_TRACE(std::string(one.name) + (is_private ? ", private" : "") + (old ? ", old logins" : ""));
        const bool passes =
            one.allowed.empty() || (is_private && one.private_does) || (old && one.allowed == "--allow-old-login");
        TDialogue dialogue = Begun(one.plugin).Server(one.request);
        if (passes) dialogue.Client(Packet(3, one.answer)).Server(CurrentOk(4));
        TSessionRig rig(dialogue, true);
        rig.session.login_rules = {.guarded = true, .old_logins = old};
        if (is_private) rig.session.net.vio = std::make_unique<TPrivateVio>(std::move(rig.session.net.vio));
        const std::string message = MessageOf([&] { rig.Connect(); });
        if (passes)
          EXPECT_EQ(message, "nothing raised");
        else
          EXPECT_THAT(message, ::testing::HasSubstr(one.allowed));
        rig.ExpectDone();
      }
    }
  }
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
       "The server asks for a way to log in that is not known here: mysql_clear_password; --client library may know "
       "it"},
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
