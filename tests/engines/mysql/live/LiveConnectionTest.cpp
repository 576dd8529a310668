// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "support/LiveDatabase.h"
#include "support/LoopbackServer.h"
#include "support/MessageOf.h"
#include "support/MySqlDialogue.h"
#include "support/Relay.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"

#include "util/Format.h"

namespace velmora {
namespace {

using testing::Answer;
using testing::Execute;
using ::testing::HasSubstr;
using testing::MessageOf;
using testing::OnMySQL;
using testing::Packet;
using testing::SendAll;
using testing::ServerConnection;
using testing::TLiveDatabase;
using testing::TLoopbackServer;
using testing::TPrivateServer;
using testing::Wire;
using TConnections = std::unique_ptr<TMyConnection>;

// What a server of today says first, and to a login that it takes.
const std::string kGreeting = Packet(0, Wire("0A '8.0.33' 00 4D000000 'abcdefgh' 00 FFF7 2D 0200 8E00 15 00*10 "
                                             "'ijklmnopqrst' 00 'mysql_native_password' 00"));
const std::string kWelcome = Packet(2, Wire("00 00 00 0200 0000"));

class LiveConnection : public testing::TWithBothClients {
 protected:
  TConnections New(const std::string& server = {}) const {
    TConnections connection = ServerConnection(TPrivateServer::Shared(), database.Name());
    connection->Server = server;
    return connection;
  }
  TConnections NewTcp() const { return New("127.0.0.1"); }
  TConnections Connected(const std::string& server = {}) const {
    TConnections connection = New(server);
    connection->SetConnected(true);
    return connection;
  }
  // Seconds until connecting to a server fails that says this and no more.
  static double SecondsToFail(TMyConnection& connection, const std::string& said) {
    const TLoopbackServer silent([&](int client) {
      SendAll(client, said);
      testing::ReceiveAll(client, 1 << 20);  // until the client closes
    });
    connection.Port = silent.Port();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THROW(connection.SetConnected(true), EMySqlException);
    EXPECT_FALSE(connection.GetConnected());
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }

  TLiveDatabase database;
};

TEST_P(LiveConnection, LocalServerBySocketOthersByTcp) {
  const TPrivateServer& shared = TPrivateServer::Shared();
  for (const auto& [server, local] : {std::pair("", true), {"LocalHost", true}, {"127.0.0.1", false}}) {
    const TConnections connection = Connected(server);
    const std::string host =
        Answer(*connection, "select host from information_schema.processlist where id = connection_id()");
    EXPECT_EQ(host.find(':') == std::string::npos, local) << server << " is " << host;
    EXPECT_EQ(Answer(*connection, "select database()"), "live");
    EXPECT_EQ(connection->ReachedAt(), local ? shared.Socket() : Format("127.0.0.1:%d", shared.Port()));
  }
  // Whatever sockets there are: another server may listen there than at the port that was given.
  const TConnections connection = New("localhost");
  connection->Options.Socket.clear();
  connection->SetConnected(true);
  EXPECT_EQ(connection->ReachedAt(), Format("localhost:%d", shared.Port()));
}

TEST_P(LiveConnection, FailuresToConnect) {
  database.Run("create user 'limited'@'%' identified by 'secret'");
  const struct {
    void (*change)(TMyConnection& connection);
    const char* message;
  } kCases[] = {
      {[](auto& c) { c.Username = "limited", c.Password = "Secret"; }, "Access denied for user 'limited'@"},
      {[](auto& c) { c.Username = "nobody"; }, "Access denied for user 'nobody'@"},
      {[](auto& c) { c.Username = "limited", c.Password = "secret"; }, "to database 'live'"},
      {[](auto& c) { c.Database = "no such"; }, "Unknown database 'no such'"},
      {[](auto& c) { c.Port = testing::FreePort(); }, "server on '127.0.0.1'"},
      {[](auto& c) { c.Port = 700000; }, "700000 is no port"},
      {[](auto& c) { c.Server = "no-such-host.invalid"; }, "no-such-host.invalid"},
      {[](auto& c) { c.Server = "", c.Options.Socket = "/no/such.sock"; }, "server through socket '/no/such.sock'"},
  };
  for (const auto& [change, message] : kCases) {
    const TConnections connection = NewTcp();
    change(*connection);
    EXPECT_THAT(MessageOf([&] { connection->SetConnected(true); }), HasSubstr(message));
    EXPECT_FALSE(connection->GetConnected() || connection->InTransaction()) << message;
    EXPECT_EQ(MessageOf([&] { Execute(*connection, "select 1"); }), "Not connected");
    EXPECT_EQ(MessageOf([&] { connection->StartTransaction(); }), "Not connected");
    if (connection->Database == "live") continue;
    connection->Database = "live";
    connection->SetConnected(true);  // after a failure
    EXPECT_EQ(Answer(*connection, "select 1"), "1");
  }
  database.Run("drop user 'limited'@'%'");
}

// Why is told by the server, or by a client that listens.
TEST_P(LiveConnection, AccountsThatLetNobodyIn) {
  const bool mysql = OnMySQL();
  const struct {
    const char* made;
    const char* message;
  } kCases[] = {
      {"identified by 'p' account lock", "locked"},
      {"identified by 'p' password expire", mysql ? "Your password has expired" : "You must SET PASSWORD"},
  };
  for (const auto& [made, message] : kCases) {
    database.Run(std::string("create user 'barred'@'%' ") + made);
    const TConnections connection = NewTcp();
    connection->Username = "barred", connection->Password = "p", connection->Database = "";
    EXPECT_THAT(MessageOf([&] { connection->SetConnected(true), Answer(*connection, "select 1"); }),
                HasSubstr(message));
    database.Run("drop user 'barred'@'%'");
  }
}

// A password that a server does not know yet leaves over TLS or sealed; caching_sha2_password then believes a token.
TEST_P(LiveConnection, WaysToProveAPassword) {
  constexpr char kIn[] = "nothing raised";
  const char* const unsealed = GetParam() ? "sealed with a key" : kIn;  // the library asks for the key by itself
  const struct {
    const char* identified;  // where the server has this way
    ETls tls;
    bool key;  // that the server sends may be used
    const char* first;
    const char* later;  // without TLS and key
  } kCases[] = {
      {"identified with caching_sha2_password by 'p'", ETls::Preferred, false, kIn, kIn},
      {"identified with caching_sha2_password by 'p'", ETls::Off, true, kIn, kIn},
      {"identified with caching_sha2_password by 'p'", ETls::Off, false, unsealed, unsealed},
      {"identified with sha256_password by 'p'", ETls::Preferred, false, kIn, unsealed},
      {"identified with sha256_password by 'p'", ETls::Off, true, kIn, unsealed},
      {"identified with mysql_native_password by 'p'", ETls::Off, false, kIn, kIn},
      {"identified via mysql_native_password using password('p')", ETls::Off, false, kIn, kIn},
  };
  int ways = 0;
  for (const auto& c : kCases) {
    SCOPED_TRACE(Format("%s, %s, %d", c.identified, kTlsModes[static_cast<int>(c.tls)], c.key ? 1 : 0));
    if (MessageOf([&] { database.Run(std::string("create user 'proves'@'%' ") + c.identified); }) != kIn) continue;
    ++ways;
    const auto login = [&](ETls tls, bool key, const char* password) {
      const TConnections connection = NewTcp();
      connection->Username = "proves", connection->Password = password, connection->Database = "";
      connection->Options.Tls = tls, connection->Options.GetServerPublicKey = key;
      return MessageOf([&] { connection->SetConnected(true), Answer(*connection, "select 1"); });
    };
    EXPECT_THAT(login(c.tls, c.key, "p"), HasSubstr(c.first));
    EXPECT_THAT(login(ETls::Off, false, "p"), HasSubstr(c.later));
    EXPECT_THAT(login(ETls::Preferred, true, "q"), HasSubstr("Access denied for user 'proves'@"));
    database.Run("drop user 'proves'@'%'");
  }
  EXPECT_EQ(ways, OnMySQL() ? 5 : 1);
}

// A second proof that the server takes by itself is nothing that a client has to know.
TEST_P(LiveConnection, AUserOfTheSystemBesidesThePassword) {
  if (!OnMySQL()) GTEST_SKIP() << "MySQL's way to log in";
  database.Run("install plugin auth_socket soname 'auth_socket.so'");
  database.Run("set global authentication_policy = '*,*,'");
  database.Run(
      Format("create user twice@localhost identified with caching_sha2_password by 'p' "
             "and identified with auth_socket as '%s'",
             testing::UserName()));
  for (const std::string server : {"", "127.0.0.1"}) {
    const TConnections connection = New(server);
    connection->Username = "twice", connection->Password = "p", connection->Database = "";
    EXPECT_THAT(MessageOf([&] { connection->SetConnected(true); }),
                HasSubstr(GetParam() && server.empty() ? "nothing raised" : "Access denied for user 'twice'@"));
  }
  database.Run("drop user twice@localhost");
  database.Run("uninstall plugin auth_socket");
}

// Each stage of a login that never comes ends by the time-out; nor does a login take longer than any other silence.
TEST_P(LiveConnection, SilentServerTimesOut) {
  const TConnections connection = NewTcp();
  EXPECT_EQ(connection->ConnectionTimeout, 15);
  connection->Options.ReadTimeout = 1;
  EXPECT_NEAR(SecondsToFail(*connection, ""), 1.5, 1);
  connection->Options.ReadTimeout = 600;
  connection->ConnectionTimeout = 1;
  for (const std::string& said : {std::string(), kGreeting}) EXPECT_NEAR(SecondsToFail(*connection, said), 1.5, 1);
}

// What is only read has its time, and what a script does takes as long as it takes.
TEST_P(LiveConnection, SilenceEndsWhatIsRead) {
  const TConnections connection = NewTcp();
  connection->ConnectionTimeout = 1;
  connection->SetConnected(true);
  EXPECT_EQ(Answer(*connection, "select sleep(1.5)"), "0") << "the time to connect is for connecting only";
  connection->SetConnected(false);
  connection->Options.ReadTimeout = 1;
  connection->SetConnected(true);
  Execute(*connection, "do sleep(1.5)");
  EXPECT_THAT(MessageOf([&] { Answer(*connection, "select sleep(3)"); }), HasSubstr("Lost connection"));
  EXPECT_FALSE(connection->GetConnected());
}

TEST_P(LiveConnection, NewConnectionHasTheOptionsAndNothingElse) {
  const TConnections connection = NewTcp();
  connection->ConnectionTimeout = 7;
  connection->Options.CaFile = "ca.pem";
  const auto other = connection->NewConnection();
  EXPECT_EQ(other->ConnectionTimeout, 7);
  EXPECT_EQ(other->Options.CaFile, "ca.pem");
  EXPECT_EQ(other->Username, "");
  EXPECT_FALSE(other->GetConnected());
}

TEST_P(LiveConnection, Utf8IsSpokenFromTheFirstByte) {
  const TConnections connection = Connected();
  EXPECT_EQ(Answer(*connection, "select concat(@@character_set_client, @@character_set_results)"), "utf8mb4utf8mb4");
  Execute(*connection, "create table `Šifra` (`žiro` varchar(20) default 'Šifra 雪' comment 'ÄÖ 雪')");
  EXPECT_THAT(Answer(*connection, "show create table `Šifra`"),
              HasSubstr("`žiro` varchar(20) DEFAULT 'Šifra 雪' COMMENT 'ÄÖ 雪'"));
  Execute(*connection, "insert into `Šifra` values ('雪 😀')");
  EXPECT_EQ(Answer(*connection, "select `žiro` from `Šifra`"), "雪 😀");
}

TEST_P(LiveConnection, CompressedFrames) {
  const TConnections connection = NewTcp();
  connection->Options.Compress = true;
  connection->SetConnected(true);
  EXPECT_EQ(Answer(*connection, "show session status like 'Compression'"), "ON");
  EXPECT_EQ(Answer(*connection, "select repeat('x', 1000000)"), std::string(1000000, 'x'));
}

TEST_P(LiveConnection, ServerGetsNoLocalFile) {
  const TConnections connection = Connected();
  Execute(*connection, "create table t (a text)");
  EXPECT_THROW(Execute(*connection, "load data local infile '/etc/passwd' into table t"), EMySqlException);
  EXPECT_EQ(Answer(*connection, "select count(*) from t"), "0");
}

// A server that has a certificate of its own making, for "127.0.0.1".
class TTlsServer {
 public:
  TTlsServer() : made_(MakeCertificate()), server_({"--ssl-cert=" + CaFile(), "--ssl-key=" + folder_ / "key.pem"}) {}

  std::string CaFile() const { return folder_ / "cert.pem"; }
  TConnections New(ETls tls, const std::string& server = "127.0.0.1") const {
    TConnections connection = ServerConnection(server_);
    connection->Server = server;
    connection->Options.Tls = tls;
    return connection;
  }

 private:
  bool MakeCertificate() const {
    const std::string command =
        "openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=127.0.0.1 "
        "-addext subjectAltName=IP:127.0.0.1 -keyout '" +
        folder_ / "key.pem" + "' -out '" + CaFile() + "' 2>/dev/null";
    return std::system(command.c_str()) == 0;
  }

  testing::TScratchFolder folder_;
  bool made_;
  TPrivateServer server_;
};

std::string Cipher(TMyConnection& connection) {
  connection.SetConnected(true);
  return Answer(connection, "show session status like 'Ssl_cipher'");
}

TEST_P(LiveConnection, TlsAsWanted) {
  const TTlsServer server;
  EXPECT_EQ(Cipher(*server.New(ETls::Off)), "");
  EXPECT_EQ(Cipher(*server.New(ETls::Preferred, "")), "");
  const TConnections unchecked = server.New(ETls::Preferred);
  std::string told;
  unchecked->Notice = [&](const std::string& text) { told = text; };
  EXPECT_NE(Cipher(*unchecked), "");
  EXPECT_THAT(told, HasSubstr("nobody has checked who answers"));

  const TConnections required = server.New(ETls::Required);
  EXPECT_THAT(MessageOf([&] { required->SetConnected(true); }), HasSubstr("certificate"));
  required->Options.CaFile = server.CaFile();
  EXPECT_NE(Cipher(*required), "");
  // The second connection that is checked need not agree on keys again; the unchecked one was no help to the first.
  const auto goes_on = [&] { return Answer(*required, "show session status like 'Ssl_sessions_reused'"); };
  EXPECT_EQ(goes_on(), "0");
  required->SetConnected(false);
  required->SetConnected(true);
  EXPECT_EQ(goes_on(), GetParam() && OnMySQL() ? "1" : "0") << "MariaDB does it, too, but says 0";
  required->SetConnected(false);
  required->Server = "localhost";  // the same machine, but not the name in the certificate
  required->Options.Socket.clear();
  EXPECT_THAT(MessageOf([&] { required->SetConnected(true); }), HasSubstr("certificate"));
  required->Options.Tls = ETls::VerifyCa;
  EXPECT_THAT(MessageOf([&] { required->SetConnected(true); }),
              HasSubstr(GetParam() ? "nothing raised" : "--client native"));
}

// It vouches for the server, but names nobody.
TEST_P(LiveConnection, TlsByACertificateOfTheServersOwnMaking) {
  const std::string ca = Answer(database.Connection(), "select @@datadir") + "ca.pem";
  if (!std::filesystem::exists(ca)) GTEST_SKIP() << "the server leaves no certificate of its own for others to trust";
  const struct {
    ETls tls;
    std::string ca;
    const char* message;
  } kCases[] = {{ETls::Off, "", ""},
                {ETls::Preferred, "", ""},
                {ETls::VerifyCa, ca, GetParam() ? "" : "--client native"},
                {ETls::VerifyCa, "", GetParam() ? "certificate" : "--client native"},
                {ETls::Required, ca, "certificate"},
                {ETls::Required, "", "certificate"}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(Format("%s, %s", kTlsModes[static_cast<int>(c.tls)], c.ca));
    const TConnections connection = NewTcp();
    connection->Options.Tls = c.tls, connection->Options.CaFile = c.ca;
    std::string cipher;
    const std::string message = MessageOf([&] { cipher = Cipher(*connection); });
    EXPECT_THAT(message, HasSubstr(c.message));
    EXPECT_EQ(cipher.empty(), c.tls == ETls::Off || *c.message != '\0') << message;
  }
}

TEST_P(LiveConnection, TlsOfAServerWithoutAny) {
  const TPrivateServer plain({OnMySQL() ? "--tls-version=" : "--skip-ssl"});
  const TConnections preferred = ServerConnection(plain);
  preferred->Server = "127.0.0.1";
  EXPECT_EQ(Cipher(*preferred), "");
  for (const char* server : {"127.0.0.1", ""}) {
    const TConnections required = ServerConnection(plain);
    required->Server = server;
    required->Options.Tls = ETls::Required;
    EXPECT_THROW(required->SetConnected(true), EMySqlException);
    EXPECT_FALSE(required->GetConnected());
  }
}

TEST_P(LiveConnection, Transactions) {
  const TConnections connection = Connected();
  const auto begin = [&](const char* sql) {
    connection->StartTransaction();
    EXPECT_TRUE(connection->InTransaction());
    Execute(*connection, sql);
  };
  Execute(*connection, "create table t (a int) engine=InnoDB");
  begin("insert into t values (1)");
  connection->Rollback();
  EXPECT_FALSE(connection->InTransaction());
  EXPECT_EQ(Answer(*connection, "select count(*) from t"), "0");

  begin("insert into t values (2)");
  EXPECT_THROW(Execute(*connection, "insert into nowhere values (2)"), EMySqlException);
  EXPECT_TRUE(connection->InTransaction());
  connection->Commit();
  EXPECT_FALSE(connection->InTransaction());

  begin("insert into t values (3)");
  connection->SetConnected(false);
  EXPECT_FALSE(connection->InTransaction());
  connection->SetConnected(true);
  EXPECT_EQ(Answer(*connection, "select group_concat(a) from t"), "2");
}

TEST_P(LiveConnection, IsolationLevels) {
  const TConnections writer = Connected(), reader = Connected();
  Execute(*writer, "create table t (a int) engine=InnoDB");
  writer->StartTransaction();
  Execute(*writer, "insert into t values (1)");
  for (const auto& [level, seen] : {std::pair{0, "0"}, {1, "1"}, {2, "0"}, {3, "0"}}) {
    reader->IsolationLevel = level;
    reader->StartTransaction();
    EXPECT_EQ(Answer(*reader, "select count(*) from t"), seen) << level;
    reader->Rollback();
  }
  reader->IsolationLevel = 5;
  EXPECT_EQ(MessageOf([&] { reader->StartTransaction(); }), "Isolation level 5 is unknown");
  EXPECT_FALSE(reader->InTransaction());
}

// --- Statements that another thread ends

TEST_P(LiveConnection, AnotherThreadEndsTheStatementThatRuns) {
  database.Run("create table t (a int primary key) engine=InnoDB");
  database.Run("insert into t values (1)");
  database.Connection().StartTransaction();
  database.Run("update t set a = 2");  // which the others wait for
  const struct {
    void (TMyConnection::*end)();
    const char* message;
    bool connected;
  } kCases[] = {{&TMyConnection::CancelRunning, "Query execution was interrupted", true},
                {&TMyConnection::Sever, "Lost connection", false}};
  for (const auto& c : kCases) {
    for (const char* server : {"", "127.0.0.1"}) {
      SCOPED_TRACE(std::string(c.message) + server);
      const TConnections connection = Connected(server);
      connection->StartTransaction();
      std::thread other([&] {
        const TConnections watcher = Connected();
        const std::string waiting = "select count(*) from information_schema.processlist where info = 'delete from t'";
        for (int i = 0; i < 3000 && Answer(*watcher, waiting) == "0"; ++i)
          std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ((*connection).*c.end)();
      });
      EXPECT_THAT(MessageOf([&] { Execute(*connection, "delete from t"); }), HasSubstr(c.message));
      other.join();
      EXPECT_EQ(connection->GetConnected(), c.connected);
      EXPECT_EQ(connection->InTransaction(), c.connected);
      connection->SetConnected(true);
      EXPECT_EQ(Answer(*connection, "select 5"), "5");
    }
  }
  database.Connection().Rollback();
}

TEST_P(LiveConnection, NothingRunsThatCouldBeEnded) {
  const TConnections connection = New();
  connection->CancelRunning();
  connection->Sever();
  connection->SetConnected(true);
  EXPECT_THROW(connection->CancelRunning(), EMySqlException);  // it has not said yet who it is
  connection->StartTransaction();
  connection->CancelRunning();
  EXPECT_EQ(Answer(*connection, "select 5"), "5");
  connection->Sever();
  EXPECT_THROW(Execute(*connection, "select 5"), EMySqlException);
  EXPECT_FALSE(connection->GetConnected());
}

// A number that means our statement on one server means a stranger's on the next.
TEST_P(LiveConnection, AnotherServerAtTheSameAddressIsToldNothing) {
  const TPrivateServer other;
  std::atomic<int> kills = 0;
  testing::TRelay relay(TPrivateServer::Shared().Port(), [&](const std::string& statement) {
    if (statement.starts_with("kill")) ++kills;
    return testing::EFate::Pass;
  });
  const TConnections connection = NewTcp();
  connection->Port = relay.Port();
  connection->Options.Tls = ETls::Off;  // since the relay reads what is said
  connection->SetConnected(true);
  connection->StartTransaction();
  relay.LeadTo(other.Port());
  EXPECT_THAT(MessageOf([&] { connection->CancelRunning(); }), HasSubstr("could not be reached again"));
  EXPECT_EQ(kills, 0);
  relay.LeadTo(TPrivateServer::Shared().Port());
  connection->CancelRunning();
  EXPECT_EQ(kills, 1);
}

// --- Connections that are lost

// Which errors leave nobody to talk to: a server of our own answers each statement with one of them.
TEST_P(LiveConnection, ErrorsThatEndTheConnection) {
  const auto refusal = [](const char* number) {
    return Packet(1, Wire(std::string("FF ") + number + " '#HY000told'"));
  };
  const struct {
    std::string reply;
    bool lost;
  } kCases[] = {{refusal("1D04"), true},   // 1053
                {refusal("8104"), true},   // 1153
                {refusal("8707"), true},   // 1927
                {refusal("610C"), true},   // 3169
                {refusal("BF0F"), true},   // 4031
                {refusal("2804"), false},  // 1064
                {refusal("2505"), false},  // 1317
                {refusal("B504"), false},  // 1205
                {refusal("B107"), false},  // 1969
                {Packet(1, "\x01") + Packet(2, "\x03"), true}};
  for (const auto& [reply, lost] : kCases) {
    SCOPED_TRACE(reply);
    const TLoopbackServer server([&, answer = reply](int client) {
      for (const std::string& word : {kGreeting, kWelcome, answer}) {
        SendAll(client, word);
        testing::ReceivePacket(client);  // not every client says goodbye
      }
    });
    const TConnections connection = NewTcp();
    connection->Port = server.Port();
    connection->SetConnected(true);
    EXPECT_THROW(Execute(*connection, "do 0"), EMySqlException);
    EXPECT_EQ(connection->GetConnected(), !lost);
    connection->SetConnected(false);
  }
}

class LostConnection : public LiveConnection {
 protected:
  LostConnection() { ConnectTo(""); }

  void ConnectTo(const char* server) {
    connection = Connected(server);
    connection->StartTransaction();
  }
  // What a script's run does: the statement's own error has to come out, whatever the end of the transaction does.
  void ExpectLoss(const std::string& sql) {
    const auto guarded = [&] {
      RunGuarded([&] { Execute(*connection, sql); },
                 [&] {
                   if (connection->InTransaction()) connection->Rollback();
                 });
    };
    EXPECT_THAT(MessageOf(guarded), ::testing::AnyOf(HasSubstr("gone away"), HasSubstr("Lost connection"),
                                                     HasSubstr("killed"), HasSubstr("packet bigger")));
    EXPECT_FALSE(connection->GetConnected());
    EXPECT_FALSE(connection->InTransaction());
    EXPECT_EQ(MessageOf([&] { Execute(*connection, "select 1"); }), "Not connected");
  }
  void ExpectBack() {
    connection->SetConnected(true);
    EXPECT_EQ(Answer(*connection, "select database()"), "live");
  }

  TConnections connection;
};

TEST_P(LostConnection, ServerDiesBetweenStatements) {
  TPrivateServer::Shared().Kill();
  ExpectLoss("select 1");
  EXPECT_THAT(MessageOf([&] { connection->SetConnected(true); }), HasSubstr("Can't connect to local"));
  TPrivateServer::Shared().Restart();
  ExpectBack();
  connection->StartTransaction();
  TPrivateServer::Shared().Restart();
  EXPECT_THROW(connection->Commit(), EMySqlException);
  EXPECT_FALSE(connection->InTransaction() || connection->GetConnected());
}

TEST_P(LostConnection, ServerDiesDuringAStatement) {
  std::thread killer([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    TPrivateServer::Shared().Kill();
  });
  ExpectLoss("select sleep(30)");
  killer.join();
  TPrivateServer::Shared().Restart();
  ExpectBack();
}

TEST_P(LostConnection, TheServerHasEndedIt) {
  TPrivateServer::Shared().Restart();
  ExpectLoss("select 1");
  ConnectTo("");
  Execute(*connection, "set session wait_timeout = 1");
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  ExpectLoss("select 1");
  ConnectTo("");
  Execute(*Connected(), "kill " + Answer(*connection, "select connection_id()"));
  ExpectLoss("select 1");
  for (const char* server : {"", "127.0.0.1"}) {
    ConnectTo(server);
    ExpectLoss("select length('" + std::string(20 << 20, 'x') + "')");  // beyond the limit of a packet
    ExpectBack();
  }
}

TEST_P(LostConnection, WhileRowsComeInBlocks) {
  const auto query = connection->NewQuery();
  query->UniDirectional = true;
  query->FetchAll = false;
  query->SQL = "select seq, repeat('x', 1000) from " + testing::Numbers(200000);
  query->Open();
  TPrivateServer::Shared().Kill();
  EXPECT_THAT(MessageOf([&] {
                while (!query->Eof()) query->Next();
              }),
              HasSubstr("Lost connection"));
  EXPECT_FALSE(connection->GetConnected());
  query->Close();
  TPrivateServer::Shared().Restart();
  ExpectBack();
}

INSTANTIATE_TEST_SUITE_P(Clients, LiveConnection, ::testing::Bool(), testing::ClientName);
INSTANTIATE_TEST_SUITE_P(Clients, LostConnection, ::testing::Bool(), testing::ClientName);

}  // namespace
}  // namespace velmora
