#include "mysqlnet/MySqlSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "mysqlnet/MySqlErrors.h"
#include "mysqlnet/MySqlTokens.h"
#include "mysqlnet/SessionRig.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using namespace velmora::testing;

const std::string kNul(1, '\0');
const std::string kNew = NewToken("secret", kScramble);
const std::string kOld = OldToken("secret", kScramble);

std::string OldHead(std::uint32_t flags) { return Int(flags, 2) + Zeros(3) + "joe" + kNul; }
std::string NewHead(std::uint32_t flags) { return Int(flags, 4) + Int(1 << 30, 4) + "joe" + kNul; }

// --- The login of older servers

struct TLoginCase {
  const char* name;
  std::string greeting;
  std::string password;
  std::string database;
  std::string login;
};

TEST(MySqlSession, LoginToOlderServers) {
  constexpr std::uint32_t kNoDatabase = kNewPasswords & ~8U;
  const TLoginCase cases[] = {
      {"old passwords", ShortGreeting(kOldServer), "secret", "db", OldHead(0xA08D) + kOld + "db"},
      {"old passwords, none", ShortGreeting(kOldServer), "", "db", OldHead(0xA08D) + kNul + "db"},
      {"no database", ShortGreeting(kOldServer), "secret", "", OldHead(0xA08D) + kOld},
      {"whole scramble", OldGreeting(kNewPasswords), "secret", "db", OldHead(0xA08D) + Text(kNew) + "db"},
      {"whole scramble, no password", OldGreeting(kNewPasswords), "", "db", OldHead(0xA08D) + kNul + "db"},
      {"half a scramble", ShortGreeting(kNewPasswords), "secret", "db", OldHead(0xA08D) + "xxxxxxxx" + kNul + "db"},
      {"half a scramble, no password", ShortGreeting(kNewPasswords), "", "db", OldHead(0xA08D) + kNul + "db"},
      {"4.1.0", OldGreeting(kFirst41), "secret", "db", NewHead(0xE08D) + Text(kNew) + "db"},
      {"no databases at all", OldGreeting(kNoDatabase), "", "db", OldHead(0xA08D)},
      {"the same with a password", OldGreeting(kNoDatabase), "secret", "",
       OldHead(0xA08D) + "\x14" + kNew.substr(0, 19)},
      {"today's, current protocol off", CurrentGreeting(kCurrent), "secret", "db", NewHead(0xE08D) + Text(kNew) + "db"},
  };
  for (const TLoginCase& one : cases) {
    SCOPED_TRACE(one.name);
    TSessionRig rig(TDialogue().Server(one.greeting).Client(Packet(1, one.login)).Server(OldOk(2)));
    rig.Connect(one.password, one.database);
    rig.ExpectDone();
    EXPECT_EQ(rig.session.thread_id, 77U);
    EXPECT_EQ(rig.session.server_language, 8);
    EXPECT_EQ(rig.session.server_status, 2);
    EXPECT_FALSE(rig.session.net.compress);
  }
}

TEST(MySqlSession, BareGreetings) {
  const std::string start = std::string("\x0A") + "3.21" + kNul + Int(5, 4) + "12345678";
  const std::string token = OldToken("secret", "12345678");
  const std::pair<std::string, std::string> cases[] = {
      {start, token.substr(0, 8)}, {start + kNul, token.substr(0, 8)}, {start + kNul + Int(8, 2), token + "db"}};
  for (const auto& [greeting, end] : cases) {
    TSessionRig rig(
        TDialogue().Server(Packet(0, greeting)).Client(Packet(1, OldHead(0xA08D) + end)).Server(Packet(2, Zeros(3))));
    rig.Connect();
    rig.ExpectDone();
    EXPECT_EQ(rig.session.server_version, "3.21");
    EXPECT_EQ(rig.session.server_status, 2);
  }
}

TEST(MySqlSession, CapabilitiesAskedFor) {
  struct {
    std::uint32_t offered, by_argument, by_property, sent;
  } const cases[] = {
      {kOldServer, 0x20, 0, 0xA0AD},              // compression where the server has it
      {kOldServer & ~0x20U, 0x20, 0x20, 0xA08D},  // and never else
      {kOldServer, 0x800, 0, 0xA08D},             // the same with TLS
      {kOldServer, 0x10, 0x2, 0xA09F},            // all others go through
  };
  for (const auto& one : cases) {
    TSessionRig rig(TDialogue()
                        .Server(ShortGreeting(one.offered))
                        .Client(Packet(1, OldHead(one.sent) + kOld + "db"))
                        .Server(OldOk(2)));
    rig.session.client_flag = one.by_property;
    rig.session.Connect("", "joe", "secret", "db", 0, one.by_argument, "");
    rig.ExpectDone();
    EXPECT_EQ(rig.session.client_flag, one.sent);
    EXPECT_EQ(rig.session.net.compress, (one.sent & 0x20) != 0);
  }
}

TEST(MySqlSession, PasswordIsAskedForAgain) {
  const std::string other = "TSRQPONMLKJIHGFEDCBA";
  struct {
    const char* name;
    std::string request, answer;
    const char* password;
  } const cases[] = {
      {"the old token", "\xFE", kOld, "secret"},
      {"the old token, no password", "\xFE", kNul, ""},
      {"24 bytes, old token", "*234" + other, OldToken("secret", other), "secret"},
      {"24 bytes", std::string("\1\2\3\4") + kScramble,
       std::string("\x05\x7b\xac\x68\xbb\x50\x9a\x51\x25\x59\x99\xdd\xef\x39\xf8\xc4\x71\xc4\x0e\xb6"), "secret"},
      {"24 bytes, blanks do not count", std::string("\1\2\3\4") + kScramble,
       std::string("\x05\x7b\xac\x68\xbb\x50\x9a\x51\x25\x59\x99\xdd\xef\x39\xf8\xc4\x71\xc4\x0e\xb6"), "se\tcr et"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    const std::string password = *one.password == '\0' ? kNul : "xxxxxxxx" + kNul;
    const auto dialogue = [&] {
      return TDialogue()
          .Server(ShortGreeting(kNewPasswords))
          .Client(Packet(1, OldHead(0xA08D) + password + "db"))
          .Server(Packet(2, one.request))
          .Client(Packet(3, one.answer))
          .Server(OldOk(4));
    };
    TSessionRig accepted(dialogue());
    accepted.Connect(one.password);
    accepted.ExpectDone();
    TSessionRig guarded(dialogue());
    guarded.session.login_rules.guarded = true;
    const std::string refusal = MessageOf([&] { guarded.Connect(one.password); });
    EXPECT_EQ(refusal.find("--allow-old-login") != std::string::npos, *one.password != '\0') << refusal;
  }
  // An answer of 24 bytes that begins with 0 is an accepted login.
  TSessionRig rig(TDialogue()
                      .Server(ShortGreeting(kNewPasswords))
                      .Client(Packet(1, OldHead(0xA08D) + kNul + "db"))
                      .Server(Packet(2, Zeros(3) + Int(2, 2) + std::string(19, 'i'))));
  rig.Connect("");
  rig.ExpectDone();
}

TEST(MySqlSession, RefusedInEachPhase) {
  const std::string login = Packet(1, OldHead(0xA08D) + "xxxxxxxx" + kNul + "db");
  struct {
    const char* name;
    TDialogue dialogue;
    int number;
  } const cases[] = {
      {"instead of a greeting", TDialogue().Server(ErrorPacket(0, 1040, "Too many connections")), 1040},
      {"wrong protocol", TDialogue().Server(Packet(0, "\x09old")), 2007},
      {"as reply", TDialogue().Server(ShortGreeting(kNewPasswords)).Client(login).Server(ErrorPacket(2, 1045, "no")),
       1045},
      {"after the old token",
       TDialogue()
           .Server(ShortGreeting(kNewPasswords))
           .Client(login)
           .Server(Packet(2, "\xFE"))
           .Client(Packet(3, kOld))
           .Server(ErrorPacket(4, 1251, "no")),
       1251},
      {"reply of a server with old passwords only",
       TDialogue()
           .Server(ShortGreeting(kOldServer))
           .Client(Packet(1, OldHead(0xA08D) + kOld + "db"))
           .Server(ErrorPacket(2, 1049, "Unknown database")),
       1049},
      {"reply out of order", TDialogue().Server(ShortGreeting(kNewPasswords)).Client(login).Server(OldOk(3)), 1156},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    TSessionRig rig(one.dialogue);
    try {
      rig.Connect();
      ADD_FAILURE() << "connected";
    } catch (const EMySqlException& error) {
      EXPECT_EQ(error.Number(), one.number);
    }
    EXPECT_EQ(rig.dialogue.Fault(), "");
    EXPECT_FALSE(rig.session.net.vio);
    rig.session.SimpleCommand(kQuery, "select 1", false, 8);  // does nothing at all
  }
}

TEST(MySqlSession, NoTransport) {
  TMySqlSession session;
  session.protocol = 2;
  EXPECT_EQ(MessageOf([&] { session.Connect("h", "", "", "", 0, 0, ""); }), "Wrong or unknown protocol");
}

TEST(MySqlSession, EmptyArgumentsTakeWhatIsStored) {
  TSessionRig rig(TDialogue()
                      .Server(ShortGreeting(kOldServer))
                      .Client(Packet(1, OldHead(0xA08D) + kOld + "stored"))
                      .Server(OldOk(2)));
  rig.session.user = "joe";
  rig.session.password = "secret";
  rig.session.database = "stored";
  rig.session.port = 3307;
  rig.session.Connect("", "", "", "", 0, 0, "");
  rig.ExpectDone();
  EXPECT_EQ(rig.session.port, 3307);
  EXPECT_THAT(rig.dialogue.Timeouts(), ::testing::ElementsAre(7));
}

TEST(MySqlSession, GuardedPasswordIsNoneOfServersBefore41) {
  TSessionRig rig(TDialogue().Server(ShortGreeting(kOldServer)));
  rig.session.login_rules.guarded = true;
  EXPECT_NE(MessageOf([&] { rig.Connect(); }).find("--allow-old-login"), std::string::npos);
  rig.ExpectDone();
}

TEST(MySqlSession, RequiredTlsIsNoneOfOlderServers) {
  TSessionRig rig(TDialogue().Server(ShortGreeting(kOldServer)), true);
  rig.session.tls.mode = EMySqlTls::Required;
  EXPECT_EQ(MessageOf([&] { rig.Connect(); }), "SSL connection error: the server offers none");
  rig.ExpectDone();  // no password was sent
}

// --- Commands

TEST(MySqlSession, NumbersBeginAnewWithEachCommand) {
  TSessionRig rig(LoggedIn(false)
                      .Client(Packet(0, "\x02other"))
                      .Server(OldOk(1))
                      .Client(Packet(0, "\x0E"))
                      .Server(ErrorPacket(1, 1047, "Unknown command"))
                      .Client(Packet(0, "\x0E"))
                      .Server(OldOk(1)));
  rig.Connect();
  rig.session.SimpleCommand(2, "other and more", false, 5);
  EXPECT_EQ(MessageOf([&] { rig.session.SimpleCommand(14, "", false, 0); }), "Unknown command");
  rig.session.SimpleCommand(14, "", false, 0);
  rig.ExpectDone();
  EXPECT_EQ(rig.dialogue.Timeouts().back(), 70);
  rig.session.Close();
  EXPECT_TRUE(rig.dialogue.SaidGoodbye());
}

TEST(MySqlSession, StatementsWithoutRows) {
  struct {
    bool current;
    std::string reply;
    std::uint16_t status, warnings;
    const char* info;
  } const cases[] = {
      {false, Packet(1, kNul + "\x03\x05" + Int(0x103, 2) + "\x04info"), 0x103, 0, "\x04info"},
      {false, Packet(1, kNul + "\x03\x05" + Int(0x103, 2)), 0x103, 0, ""},
      {false, Packet(1, kNul + "\x03\x05"), 2, 0, ""},
      {true, Packet(1, kNul + "\x03\x05" + Int(3, 2) + Int(9, 2) + "\x04info"), 3, 9, "info"},
      {true, Packet(1, kNul + "\x03\x05" + Int(3, 2) + Int(9, 2)), 3, 9, ""},
      {true, Packet(1, kNul + "\x03\x05" + Int(3, 2) + Int(9, 2) + "\xF0in"), 3, 9, "in"},
  };
  for (const auto& one : cases) {
    TSessionRig rig(LoggedIn(one.current).Client(Command("update t")).Server(one.reply), one.current);
    rig.Connect();
    rig.Query("update t");
    rig.ExpectDone();
    EXPECT_EQ(rig.session.affected_rows, 3U);
    EXPECT_EQ(rig.session.insert_id, 5U);
    EXPECT_EQ(rig.session.server_status, one.status);
    EXPECT_EQ(rig.session.warning_count, one.warnings);
    EXPECT_EQ(rig.session.info, one.info);
    EXPECT_FALSE(rig.session.has_result);
  }
}

TEST(MySqlSession, HeadOfAResult) {
  TSessionRig rig(LoggedIn(false)
                      .Client(Command("a"))
                      .Server(Packet(1, kNul + kNul + kNul + Zeros(2)))
                      .Client(Command("b"))
                      .Server(Packet(1, "\x02\x09")));
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

// --- The server asks for a file

class LocalFile : public ::testing::Test {
 protected:
  LocalFile() { WriteFileText(path, content); }

  TDialogue Asked(const std::string& name) const {
    return LoggedIn(false).Client(Command("load")).Server(Packet(1, "\xFB" + name));
  }
  std::string Load(const TDialogue& dialogue, const std::string& offered) {
    TSessionRig rig(dialogue);
    rig.session.local_file = offered;
    rig.Connect();
    const std::string message = MessageOf([&] { rig.Query("load"); });
    rig.ExpectDone();
    affected = rig.session.affected_rows;
    return message;
  }

  TScratchFolder folder;
  const std::string path = folder / "rows.txt";
  const std::string content = std::string(8192, 'a') + "bc";
  std::uint64_t affected = 0;
};

TEST_F(LocalFile, NamedByTheCallerIsSentInPieces) {
  TDialogue dialogue = Asked(path);
  dialogue.Client(Packet(2, std::string(8192, 'a')) + Packet(3, "bc") + Packet(4, ""))
      .Server(Packet(5, kNul + "\x02" + kNul + Int(2, 2)));
  EXPECT_EQ(Load(dialogue, path), "nothing raised");
  EXPECT_EQ(affected, 2U);
}

TEST_F(LocalFile, AnyOtherIsRefused) {
  const std::string refusal = "The server asked for the local file %s, which it was not offered";
  for (const std::string& offered : {std::string(), path + "x"}) {
    TDialogue dialogue = Asked(path);
    dialogue.Client(Packet(2, "")).Server(OldOk(3));
    EXPECT_EQ(Load(dialogue, offered), Format(refusal, path));
  }
  TDialogue nameless = Asked("");
  nameless.Client(Packet(2, "")).Server(OldOk(3));
  EXPECT_EQ(Load(nameless, ""), Format(refusal, ""));
  // And the right one only once.
  TDialogue twice = Asked(path);
  twice.Client(Packet(2, std::string(8192, 'a')) + Packet(3, "bc") + Packet(4, ""))
      .Server(Packet(5, "\xFB" + path))
      .Client(Packet(6, ""))
      .Server(OldOk(7));
  EXPECT_EQ(Load(twice, path), Format(refusal, path));
  // Nor does a server get on by not taking no for an answer.
  TDialogue stubborn = Asked("/etc/passwd");
  stubborn.Client(Packet(2, "")).Server(Packet(3, "\xFB/etc/passwd"));
  EXPECT_EQ(Load(stubborn, ""), "Malformed packet");
}

TEST_F(LocalFile, ThatCannotBeReadIsAnError) {
  TDialogue dialogue = Asked(folder / "none");
  dialogue.Client(Packet(2, "")).Server(OldOk(3));
  EXPECT_EQ(Load(dialogue, folder / "none"), Format("The local file %s cannot be read", folder / "none"));
}

}  // namespace
}  // namespace velmora
