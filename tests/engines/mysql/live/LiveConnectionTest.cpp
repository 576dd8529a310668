#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "support/LiveDatabase.h"
#include "support/MessageOf.h"
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
using testing::ServerConnection;
using testing::TLiveDatabase;
using testing::TPrivateServer;
using TConnections = std::unique_ptr<TMyConnection>;

// A socket of 127.0.0.1 that accepts connections and never says a word of its own.
class TListener {
 public:
  TListener() : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address_);
    EXPECT_EQ(bind(socket_, Address(), size), 0);
    EXPECT_EQ(listen(socket_, 5), 0);
    EXPECT_EQ(getsockname(socket_, reinterpret_cast<sockaddr*>(&address_), &size), 0);
  }
  ~TListener() { close(socket_); }
  TListener(const TListener&) = delete;
  TListener& operator=(const TListener&) = delete;

  int Port() const { return ntohs(address_.sin_port); }
  int Accept() const { return accept(socket_, nullptr, nullptr); }

 private:
  const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&address_); }

  int socket_;
  sockaddr_in address_{};
};

// What a server says first.
std::string Greeting(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  const int connection = socket(AF_INET, SOCK_STREAM, 0);
  EXPECT_EQ(connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  std::array<char, 1024> buffer{};
  const ssize_t size = read(connection, buffer.data(), buffer.size());
  close(connection);
  return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

class LiveConnection : public testing::TWithBothClients {
 protected:
  TConnections New() const { return ServerConnection(TPrivateServer::Shared(), database.Name()); }
  TConnections NewTcp() const {
    TConnections connection = New();
    connection->Server = "127.0.0.1";
    return connection;
  }
  // Seconds until connecting fails.
  static double SecondsToFail(TMyConnection& connection) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THROW(connection.SetConnected(true), EMySqlException);
    EXPECT_FALSE(connection.GetConnected());
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }

  TLiveDatabase database;
};

TEST_P(LiveConnection, LocalServerBySocketOthersByTcp) {
  const struct {
    const char* server;
    bool local;
  } kCases[] = {{"", true}, {"localhost", true}, {"LocalHost", true}, {"127.0.0.1", false}};
  for (const auto& [server, local] : kCases) {
    const TConnections connection = New();
    connection->Server = server;
    connection->SetConnected(true);
    const std::string host = Answer(*connection,
                                    "select host from information_schema.processlist where id = "
                                    "connection_id()");
    EXPECT_EQ(host.find(':') == std::string::npos, local) << server << " is " << host;
    EXPECT_EQ(Answer(*connection, "select database()"), "live");
    const TPrivateServer& shared = TPrivateServer::Shared();
    EXPECT_EQ(connection->ReachedAt(), local ? shared.Socket() : Format("127.0.0.1:%d", shared.Port()));
  }
}

// Whatever sockets there are: another server may listen there.
TEST_P(LiveConnection, AGivenPortIsTheOnlyWay) {
  const TConnections connection = New();
  connection->Server = "localhost";
  connection->Options.Socket.clear();
  connection->SetConnected(true);
  EXPECT_EQ(connection->ReachedAt(), Format("localhost:%d", TPrivateServer::Shared().Port()));
  EXPECT_EQ(Answer(*connection, "select database()"), "live");
}

TEST_P(LiveConnection, FailuresToConnect) {
  database.Run("create or replace user 'limited'@'%' identified by 'secret'");
  const struct {
    const char* name;
    std::function<void(TMyConnection&)> change;
    const char* message;
  } kCases[] = {
      {"wrong password", [](auto& c) { c.Username = "limited", c.Password = "Secret"; },
       "Access denied for user 'limited'@"},
      {"unknown user", [](auto& c) { c.Username = "nobody"; }, "Access denied for user 'nobody'@"},
      {"no right to the database", [](auto& c) { c.Username = "limited", c.Password = "secret"; },
       "to database 'live'"},
      {"unknown database", [](auto& c) { c.Database = "no such"; }, "Unknown database 'no such'"},
      {"closed port", [](auto& c) { c.Port = testing::FreePort(); }, "server on '127.0.0.1'"},
      {"impossible port", [](auto& c) { c.Port = 700000; }, "700000 is no port"},
      {"unknown host", [](auto& c) { c.Server = "no-such-host.invalid"; }, "no-such-host.invalid"},
      {"no socket", [](auto& c) { c.Server = "", c.Options.Socket = "/no/such.sock"; },
       "server through socket '/no/such.sock'"},
  };
  for (const auto& [name, change, message] : kCases) {
    SCOPED_TRACE(name);
    const TConnections connection = NewTcp();
    change(*connection);
    EXPECT_THAT(MessageOf([&] { connection->SetConnected(true); }), HasSubstr(message));
    EXPECT_THROW(connection->SetConnected(true), EMySqlException);
    EXPECT_FALSE(connection->GetConnected());
    EXPECT_FALSE(connection->InTransaction());
    EXPECT_EQ(MessageOf([&] { Execute(*connection, "select 1"); }), "Not connected");
    EXPECT_EQ(MessageOf([&] { connection->StartTransaction(); }), "Not connected");
  }
  database.Run("drop user 'limited'@'%'");
}

TEST_P(LiveConnection, ConnectsAfterAFailure) {
  const TConnections connection = NewTcp();
  connection->Database = "no such";
  EXPECT_THROW(connection->SetConnected(true), EMySqlException);
  connection->Database = "live";
  connection->SetConnected(true);
  EXPECT_EQ(Answer(*connection, "select 1"), "1");
}

// Each stage of a login that never comes ends by the time-out.
TEST_P(LiveConnection, SilentServerTimesOut) {
  EXPECT_EQ(ServerConnection(TPrivateServer::Shared())->ConnectionTimeout, 15);
  const TListener listener;
  const TConnections connection = NewTcp();
  connection->Port = listener.Port();
  connection->Options.ReadTimeout = 1;
  EXPECT_NEAR(SecondsToFail(*connection), 1.5, 1) << "nor does a login take longer than any other silence";
  connection->Options.ReadTimeout = 600;
  connection->ConnectionTimeout = 1;
  EXPECT_NEAR(SecondsToFail(*connection), 1.5, 1);

  const std::string greeting = Greeting(TPrivateServer::Shared().Port());
  int greeted = -1;
  std::thread server([&] {
    for (int i = 0; i < 2; ++i) close(listener.Accept());  // the attempts from above
    greeted = listener.Accept();
    EXPECT_EQ(write(greeted, greeting.data(), greeting.size()), static_cast<ssize_t>(greeting.size()));
  });
  EXPECT_NEAR(SecondsToFail(*connection), 1.5, 1);
  server.join();
  close(greeted);
}

TEST_P(LiveConnection, TimeoutHoldsForConnectingOnly) {
  const TConnections connection = NewTcp();
  connection->ConnectionTimeout = 1;
  connection->SetConnected(true);
  EXPECT_EQ(Answer(*connection, "select sleep(1.5)"), "0");
}

// What is only read has its time, and what a script does takes as long as it takes.
TEST_P(LiveConnection, SilenceEndsWhatIsRead) {
  const TConnections connection = NewTcp();
  connection->Options.ReadTimeout = 1;
  connection->SetConnected(true);
  Execute(*connection, "do sleep(1.5)");
  EXPECT_THAT(MessageOf([&] { Answer(*connection, "select sleep(3)"); }), HasSubstr("Lost connection"));
  EXPECT_FALSE(connection->GetConnected());
}

TEST_P(LiveConnection, NewConnectionHasTheOptionsAndNothingElse) {
  const TConnections connection = NewTcp();
  connection->ConnectionTimeout = 7;
  connection->Options.Compress = true;
  connection->Options.Tls = ETls::Required;
  connection->Options.CaFile = "ca.pem";
  const auto other = connection->NewConnection();
  EXPECT_EQ(other->ConnectionTimeout, 7);
  EXPECT_TRUE(other->Options.Compress);
  EXPECT_EQ(other->Options.Tls, ETls::Required);
  EXPECT_EQ(other->Options.CaFile, "ca.pem");
  EXPECT_EQ(other->Options.Socket, TPrivateServer::Shared().Socket());
  EXPECT_EQ(other->Username, "");
  EXPECT_FALSE(other->GetConnected());
}

TEST_P(LiveConnection, Utf8IsSpokenFromTheFirstByte) {
  const TConnections connection = New();
  connection->SetConnected(true);
  EXPECT_EQ(Answer(*connection, "select concat(@@character_set_client, @@character_set_results)"), "utf8mb4utf8mb4");
  Execute(*connection, "create table `Šifra` (`žiro` varchar(20) default 'Šifra 雪' comment 'ÄÖ 雪')");
  EXPECT_THAT(Answer(*connection, "show create table `Šifra`"),
              HasSubstr("`žiro` varchar(20) DEFAULT 'Šifra 雪' COMMENT 'ÄÖ 雪'"));
  EXPECT_EQ(Answer(*connection, "show tables"), "Šifra");
  Execute(*connection, "insert into `Šifra` values ('雪 😀')");
  EXPECT_EQ(Answer(*connection, "select `žiro` from `Šifra`"), "雪 😀");
}

TEST_P(LiveConnection, CompressedFrames) {
  const TConnections connection = NewTcp();
  connection->Options.Compress = true;
  connection->SetConnected(true);
  EXPECT_EQ(Answer(*connection, "show session status like 'Compression'"), "ON");
  EXPECT_EQ(Answer(*connection, "select length(repeat('x', 1000000))"), "1000000");
  EXPECT_EQ(Answer(*connection, "select repeat('x', 1000000)"), std::string(1000000, 'x'));
}

TEST_P(LiveConnection, ServerGetsNoLocalFile) {
  const TConnections connection = New();
  connection->SetConnected(true);
  Execute(*connection, "create table t (a text)");
  EXPECT_THROW(Execute(*connection, "load data local infile '/etc/passwd' into table t"), EMySqlException);
  EXPECT_EQ(Answer(*connection, "select count(*) from t"), "0");
}

// A server that has a certificate of its own making, for "127.0.0.1".
class TTlsServer {
 public:
  TTlsServer() : made_(MakeCertificate()), server_({"--ssl-cert=" + CaFile(), "--ssl-key=" + folder_ / "key.pem"}) {}

  std::string CaFile() const { return folder_ / "cert.pem"; }
  TConnections NewTcp(ETls tls) const {
    TConnections connection = ServerConnection(server_);
    connection->Server = "127.0.0.1";
    connection->Options.Tls = tls;
    return connection;
  }
  TConnections NewLocal(ETls tls) const {
    TConnections connection = NewTcp(tls);
    connection->Server.clear();
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

TEST_P(LiveConnection, TlsAsWanted) {
  const TTlsServer server;
  const auto cipher = [](TMyConnection& connection) {
    connection.SetConnected(true);
    return Answer(connection, "show session status like 'Ssl_cipher'");
  };
  EXPECT_EQ(cipher(*server.NewTcp(ETls::Off)), "");
  EXPECT_NE(cipher(*server.NewTcp(ETls::Preferred)), "");
  EXPECT_EQ(cipher(*server.NewLocal(ETls::Preferred)), "");
  const TConnections required = server.NewTcp(ETls::Required);
  EXPECT_THAT(MessageOf([&] { required->SetConnected(true); }), HasSubstr("certificate"));
  required->Options.CaFile = server.CaFile();
  EXPECT_NE(cipher(*required), "");
  required->SetConnected(false);
  required->Server = "localhost";  // the same machine, but not the name in the certificate
  required->Options.Socket.clear();
  EXPECT_THAT(MessageOf([&] { required->SetConnected(true); }), HasSubstr("certificate"));
  required->Options.Tls = ETls::VerifyCa;
  const std::string refusal = MessageOf([&] { required->SetConnected(true); });
  EXPECT_THAT(refusal, HasSubstr(GetParam() ? "nothing raised" : "--client native"));
  const TConnections unchecked = server.NewTcp(ETls::Preferred);
  std::string told;
  unchecked->Notice = [&](const std::string& text) { told = text; };
  unchecked->SetConnected(true);
  EXPECT_THAT(told, HasSubstr("nobody has checked who answers"));
}

TEST_P(LiveConnection, TlsOfAServerWithoutAny) {
  const TConnections connection = NewTcp();
  connection->SetConnected(true);  // preferred
  EXPECT_EQ(Answer(*connection, "show session status like 'Ssl_cipher'"), "");
  for (const char* server : {"127.0.0.1", ""}) {
    const TConnections required = NewTcp();
    required->Server = server;
    required->Options.Tls = ETls::Required;
    EXPECT_THROW(required->SetConnected(true), EMySqlException);
    EXPECT_FALSE(required->GetConnected());
  }
}

TEST_P(LiveConnection, Transactions) {
  const TConnections connection = New();
  connection->SetConnected(true);
  Execute(*connection, "create table t (a int) engine=InnoDB");
  connection->StartTransaction();
  EXPECT_TRUE(connection->InTransaction());
  Execute(*connection, "insert into t values (1)");
  connection->Rollback();
  EXPECT_FALSE(connection->InTransaction());
  EXPECT_EQ(Answer(*connection, "select count(*) from t"), "0");

  connection->StartTransaction();
  Execute(*connection, "insert into t values (2)");
  EXPECT_THROW(Execute(*connection, "insert into nowhere values (2)"), EMySqlException);
  EXPECT_TRUE(connection->InTransaction());
  connection->Commit();
  EXPECT_FALSE(connection->InTransaction());
  EXPECT_EQ(Answer(*connection, "select a from t"), "2");

  connection->StartTransaction();
  Execute(*connection, "insert into t values (3)");
  connection->SetConnected(false);
  EXPECT_FALSE(connection->InTransaction());
  connection->SetConnected(true);
  EXPECT_EQ(Answer(*connection, "select count(*) from t"), "1");
}

TEST_P(LiveConnection, IsolationLevels) {
  const TConnections writer = New(), reader = New();
  writer->SetConnected(true);
  reader->SetConnected(true);
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
    const char* name;
    void (TMyConnection::*end)();
    const char* message;
    bool connected;
  } kCases[] = {{"cancel", &TMyConnection::CancelRunning, "Query execution was interrupted", true},
                {"sever", &TMyConnection::Sever, "Lost connection", false}};
  for (const auto& c : kCases) {
    for (const char* server : {"", "127.0.0.1"}) {
      SCOPED_TRACE(std::string(c.name) + server);
      const TConnections connection = New();
      connection->Server = server;
      connection->SetConnected(true);
      connection->StartTransaction();
      std::thread other([&] {
        const TConnections watcher = New();
        watcher->SetConnected(true);
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
  connection->SetConnected(true);
  connection->StartTransaction();
  relay.LeadTo(other.Port());
  EXPECT_THAT(MessageOf([&] { connection->CancelRunning(); }), HasSubstr("could not be reached again"));
  EXPECT_EQ(kills, 0);
  relay.LeadTo(TPrivateServer::Shared().Port());
  connection->CancelRunning();
  EXPECT_EQ(kills, 1);
}

// Which errors leave nobody to talk to: a server of our own answers each statement with one of them.
TEST_P(LiveConnection, ErrorsThatEndTheConnection) {
  const auto packet = [](char number, const std::string& payload) {
    return std::string{static_cast<char>(payload.size()), 0, 0, number} + payload;
  };
  const auto refusal = [&](int number) {
    const std::string code{static_cast<char>(number & 0xFF), static_cast<char>(number >> 8)};
    return packet(1, "\xFF" + code + "#HY000told");
  };
  const struct {
    std::string reply;
    bool lost;
  } kCases[] = {{refusal(1053), true},  {refusal(1153), true},
                {refusal(1927), true},  {refusal(3169), true},
                {refusal(4031), true},  {refusal(1064), false},
                {refusal(1317), false}, {refusal(1205), false},
                {refusal(1969), false}, {packet(1, "\x01") + packet(2, "\x03"), true}};
  const TListener listener;
  const std::string greeting = Greeting(TPrivateServer::Shared().Port());
  const std::string welcome = packet(2, std::string("\0\0\0\2\0\0\0", 7));
  for (const auto& [reply, lost] : kCases) {
    SCOPED_TRACE(reply);
    std::thread server([&, answer = reply] {
      const int client = listener.Accept();
      std::array<char, 4096> heard{};
      for (const std::string& word : {greeting, welcome, answer}) {
        EXPECT_EQ(write(client, word.data(), word.size()), static_cast<ssize_t>(word.size()));
        EXPECT_GE(read(client, heard.data(), heard.size()), 0);  // not every client says goodbye
      }
      close(client);
    });
    const TConnections connection = NewTcp();
    connection->Port = listener.Port();
    connection->SetConnected(true);
    EXPECT_THROW(Execute(*connection, "do 0"), EMySqlException);
    EXPECT_EQ(connection->GetConnected(), !lost);
    connection->SetConnected(false);
    server.join();
  }
}

// --- Connections that are lost

class LostConnection : public LiveConnection {
 protected:
  LostConnection() : connection(New()) {
    connection->SetConnected(true);
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

TEST_P(LostConnection, ServerIsRestarted) {
  TPrivateServer::Shared().Restart();
  ExpectLoss("select 1");
  ExpectBack();
}

TEST_P(LostConnection, ServerHasWaitedLongEnough) {
  Execute(*connection, "set session wait_timeout = 1");
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  ExpectLoss("select 1");
  ExpectBack();
}

TEST_P(LostConnection, EndedByAnAdministrator) {
  database.Run("kill " + Answer(*connection, "select connection_id()"));
  ExpectLoss("select 1");
  ExpectBack();
}

TEST_P(LostConnection, StatementBeyondThePacketLimit) {
  for (const char* server : {"", "127.0.0.1"}) {
    connection->SetConnected(false);
    connection->Server = server;
    connection->SetConnected(true);
    connection->StartTransaction();
    ExpectLoss("select length('" + std::string(20 << 20, 'x') + "')");
    ExpectBack();
  }
}

TEST_P(LostConnection, WhileRowsComeInBlocks) {
  const auto query = connection->NewQuery();
  query->UniDirectional = true;
  query->FetchAll = false;
  query->SQL = "select seq, repeat('x', 1000) from seq_1_to_1000000";
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

TEST_P(LostConnection, EndOfTheTransactionIsTheFault) {
  TPrivateServer::Shared().Restart();
  EXPECT_THROW(connection->Commit(), EMySqlException);
  EXPECT_FALSE(connection->InTransaction());
  EXPECT_FALSE(connection->GetConnected());
}

INSTANTIATE_TEST_SUITE_P(Clients, LiveConnection, ::testing::Bool(), testing::ClientName);
INSTANTIATE_TEST_SUITE_P(Clients, LostConnection, ::testing::Bool(), testing::ClientName);

}  // namespace
}  // namespace velmora
