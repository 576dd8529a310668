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
#include "mysqlnet/SessionRig.h"
#include "support/LoopbackServer.h"
#include "support/MessageOf.h"
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

int SocketErrorNumber(TMySqlVio& vio) {
  try {
    vio.Connect();
  } catch (const SocketException& error) {
    return error.Number();
  }
  return 0;
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
  TMySqlVioTcp refused("127.0.0.1", FreePort());
  EXPECT_EQ(SocketErrorNumber(refused), 2003);
  EXPECT_EQ(MessageOf([&] { refused.Connect(); }), "Can't connect to MySQL server on '127.0.0.1' (111)");
  TMySqlVioTcp unknown("no such host", 1);
  EXPECT_EQ(SocketErrorNumber(unknown), 2005);
  EXPECT_THAT(MessageOf([&] { unknown.Connect(); }), HasSubstr("Unknown MySQL Server Host 'no such host' ("));
  TMySqlVioPipe none("", "/none/socket", 0);
  EXPECT_EQ(SocketErrorNumber(none), 2002);
  EXPECT_EQ(MessageOf([&] { none.Connect(); }),
            "Can't connect to local MySQL server through socket '/none/socket' (2)");
  TMySqlVioPipe long_path("", std::string(200, 'p'), 0);
  EXPECT_EQ(SocketErrorNumber(long_path), 2002);
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

// A listener whose queue is full answers nobody.
TEST(MySqlVio, TimeToConnect) {
  const int port = FreePort();
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
  ASSERT_EQ(listen(listener, 0), 0);
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
  const std::string greeting = CurrentGreeting(kCurrent);
  const std::string answers[] = {"", greeting.substr(0, 3), greeting.substr(0, 30), greeting,
                                 greeting + CurrentOk(2).substr(0, 6)};
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
      SendAll(connection, CurrentGreeting(kCurrent | 0x800));
      EXPECT_EQ(ReceiveAll(connection, 36).substr(0, 8), Int(32, 3) + "\1" + Int(0x8AA05, 4));
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
