#include "mysqlnet/SessionRig.h"

#include "mysqlnet/MySqlTokens.h"

namespace velmora::testing {

constexpr std::uint32_t kCurrentFlags = 0x8A20D;

TDialogue LoggedIn(bool current, std::uint32_t flags) {
  TDialogue dialogue;
  const std::string token = NewToken("secret", kScramble);
  if (current) {
    dialogue.Server(CurrentGreeting(kCurrent | flags))
        .Client(Packet(1, CurrentLogin(kCurrentFlags | flags, "joe", token, "db")))
        .Server(CurrentOk(2));
  } else {
    dialogue.Server(OldGreeting(kNewPasswords | flags))
        .Client(Packet(1, Int(0xA08D | flags, 2) + Zeros(3) + "joe" + Zeros(1) + Text(token) + "db"))
        .Server(OldOk(2));
  }
  return dialogue;
}

std::string Command(const std::string& sql) { return Packet(0, "\x03" + sql); }

}  // namespace velmora::testing
