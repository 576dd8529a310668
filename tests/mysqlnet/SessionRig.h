#pragma once

#include <gtest/gtest.h>

#include <string>

#include "mysqlnet/MySqlSession.h"
#include "support/MySqlDialogue.h"

namespace velmora::testing {

// A session whose server plays a script.
class TSessionRig {
 public:
  explicit TSessionRig(const TDialogue& script, bool current = false) : dialogue(script) {
    session.protocol = 2;  // the transport is given
    session.net.vio = dialogue.NewVio();
    session.current_protocol = current;
    session.connect_timeout = 7;
    session.command_timeout = 70;
  }
  // All was said, and nothing else.
  void ExpectDone() const {
    EXPECT_EQ(dialogue.Fault(), "");
    EXPECT_TRUE(dialogue.Done());
  }
  void Connect(const std::string& password = "secret", const std::string& database = "db") {
    session.Connect("host", "joe", password, database, 0, 0, "");
  }
  void Query(const std::string& sql) {
    session.SimpleCommand(kQuery, sql, true, sql.size());
    session.ReadQueryResult();
  }

  TDialogue dialogue;
  TMySqlSession session;
};

// The dialogue up to the end of a login, of a server of today or of an older one.
TDialogue LoggedIn(bool current, std::uint32_t flags = 0);
std::string Command(const std::string& sql);

inline std::string OldOk(int number) { return Packet(number, Zeros(3) + Int(2, 2)); }
inline std::string CurrentOk(int number) { return Packet(number, Zeros(3) + Int(2, 2) + Zeros(2)); }

}  // namespace velmora::testing
