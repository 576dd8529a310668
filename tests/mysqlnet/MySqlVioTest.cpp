// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlVio.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

#include "mysqlnet/MySqlSession.h"
#include "mysqlnet/MySqlVioPipe.h"
#include "mysqlnet/MySqlVioTcp.h"
#include "support/LoopbackServer.h"
#include "support/MessageOf.h"
#include "support/MySqlDialogue.h"
#include "support/PrivateServer.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using namespace velmora::testing;
using ::testing::HasSubstr;

double Seconds(const std::function<void()>& body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// What connecting ends in, with its number.
std::string Refusal(TMySqlVio&& vio) {
  try {
    vio.Connect();
  } catch (const SocketException& error) {
    return std::to_string(error.Number()) + " " + error.what();
  }
  return "connected";
}

TEST(MySqlVio, TcpCarriesBytesOfAnyCount) {
  for (const bool ipv6 : {false, true}) {
    const std::string big(100000, 'b');
    TLoopbackServer server([&](int connection) { SendAll(connection, "abc" + ReceiveAll(connection, big.size())); },
                           ipv6);
    if (server.Port() == 0) continue;
    TMySqlVioTcp vio(ipv6 ? "::1" : "127.0.0.1", server.Port());
    vio.Connect();
    EXPECT_FALSE(vio.IsPrivate());
    EXPECT_EQ(vio.Write(("xx" + big).data(), 2, big.size()), big.size());
    std::string got(big.size() + 10, '.');
    EXPECT_EQ(vio.Read(got.data(), 2, 1), 1U);
    EXPECT_EQ(vio.Read(got.data(), 3, big.size() + 2), big.size() + 2);
    EXPECT_EQ(got, "..abc" + big + ".....");
    EXPECT_EQ(vio.Read(got.data(), 0, 5), 0U);
    EXPECT_EQ(vio.Fault(), "");
    vio.Close();
    vio.Close();
    EXPECT_EQ(vio.Read(got.data(), 0, 5), 0U);
    EXPECT_EQ(vio.Write(got.data(), 0, 5), 0U);
  }
}

TEST(MySqlVio, WhoCannotBeReached) {
  EXPECT_EQ(Refusal(TMySqlVioTcp("127.0.0.1", FreePort())), "2003 Can't connect to MySQL server on '127.0.0.1' (111)");
  EXPECT_THAT(Refusal(TMySqlVioTcp("no such host", 1)), HasSubstr("2005 Unknown MySQL Server Host 'no such host' ("));
  EXPECT_EQ(Refusal(TMySqlVioPipe("", "/none/socket", 0)),
            "2002 Can't connect to local MySQL server through socket '/none/socket' (2)");
  EXPECT_THAT(Refusal(TMySqlVioPipe("", std::string(200, 'p'), 0)), HasSubstr("2002 "));
}

TEST(MySqlVio, PeerThatClosesRaisesNoSignal) {
  TLoopbackServer server([](int connection) { shutdown(connection, SHUT_RDWR); });
  TMySqlVioTcp vio("127.0.0.1", server.Port());
  vio.Connect();
  const std::string bytes(1 << 20, 'x');
  std::size_t written = bytes.size();
  for (int i = 0; i < 100 && written == bytes.size(); ++i) written = vio.Write(bytes.data(), 0, bytes.size());
  EXPECT_LT(written, bytes.size());
  EXPECT_EQ(vio.Fault(), "");
}

// A server of today, without TLS.
const std::string kGreeting = Packet(0, Wire("0A '8.0.33' 00 4D000000 'abcdefgh' 00 FFF7 08 0200 8E00 15 00*10 "
                                             "'ijklmnopqrst' 00 'mysql_native_password' 00"));

// A listener whose queue is full answers nobody.
TEST(MySqlVio, TimeToConnect) {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
  socklen_t size = sizeof(address);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
  ASSERT_EQ(listen(listener, 0), 0);
  ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
  const int port = ntohs(address.sin_port);
  TMySqlVioTcp first("127.0.0.1", port), second("127.0.0.1", port);
  first.SetTimeout(1);
  first.Connect();
  second.SetTimeout(1);
  std::string message;
  EXPECT_NEAR(Seconds([&] { message = MessageOf([&] { second.Connect(); }); }), 1, 0.6);
  EXPECT_EQ(message, "Can't connect to MySQL server on '127.0.0.1' (110)");
  close(listener);
}

// Half of what was announced, and then silence, at several places of a dialogue.
TEST(MySqlVio, SilenceEndsWithTheTime) {
  const std::string answers[] = {"", kGreeting.substr(0, 3), kGreeting.substr(0, 30), kGreeting,
                                 kGreeting + Wire("07000002 0000")};
  for (const std::string& answer : answers) {
    TLoopbackServer server([&](int connection) {
      SendAll(connection, answer);
      ReceiveAll(connection, 1 << 20);  // until the client closes
    });
    TMySqlSession session;
    session.current_protocol = true;
    session.connect_timeout = 1;
    std::string message;
    EXPECT_NEAR(Seconds([&] {
                  message = MessageOf([&] { session.Connect("127.0.0.1", "joe", "", "", server.Port(), 0, ""); });
                }),
                1, 0.6);
    EXPECT_EQ(message, "Lost connection to MySQL server during query: no answer within 1 seconds");
  }
}

// A byte now and then does not keep a connection waiting for ever.
TEST(MySqlVio, SlowPeersEndWithTheTimeToo) {
  TLoopbackServer server([](int connection) {
    for (int i = 0; i < 30; ++i) {
      SendAll(connection, "\x50");
      usleep(100000);
    }
  });
  TMySqlVioTcp vio("127.0.0.1", server.Port());
  vio.SetTimeout(1);
  vio.Connect();
  std::string got(1000, '.');
  EXPECT_NEAR(Seconds([&] { EXPECT_LT(vio.Read(got.data(), 0, got.size()), 30U); }), 1.2, 0.5);
  EXPECT_EQ(vio.Fault(), "no answer within 1 seconds");
  vio.Close();
}

TEST(MySqlVio, TlsThatIsNone) {
  struct {
    const char* name;
    std::string answer;
    const char* message;
  } const cases[] = {{"silence", "", "no answer within 1 seconds"},
                     {"nonsense", "This is no TLS, whatever was announced.", "wrong version number"}};
  for (const auto& one : cases) {
    TLoopbackServer server([&](int connection) {
      std::string greeting = kGreeting;
      greeting[26] = '\xFF';  // which offers TLS, too
      SendAll(connection, greeting);
      EXPECT_EQ(ReceiveAll(connection, 36).substr(0, 8), Wire("20000001 05AA0800"));
      SendAll(connection, one.answer);
      ReceiveAll(connection, 1 << 20);
    });
    TMySqlSession session;
    session.current_protocol = true;
    session.connect_timeout = 1;
    session.tls.mode = EMySqlTls::Preferred;
    EXPECT_EQ(MessageOf([&] { session.Connect("127.0.0.1", "joe", "", "", server.Port(), 0, ""); }),
              std::string("SSL connection error: ") + one.message);
  }
}

}  // namespace
}  // namespace velmora
