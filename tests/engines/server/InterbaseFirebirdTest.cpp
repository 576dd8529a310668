// SPDX-License-Identifier: GPL-3.0-or-later

// The engine and its client on real databases: files by the embedded engine, and a server of the tests' own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <thread>

#include "core/Meta.h"
#include "engines/server/ClientFirebird.h"
#include "engines/server/DBConnInterbase.h"
#include "engines/server/FirebirdLibrary.h"
#include "support/LoopbackServer.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/PrivateFirebird.h"
#include "support/PrivateServer.h"
#include "support/RowText.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using ::testing::HasSubstr;
using testing::MessageOf;
using ::testing::Not;
using testing::RowText;
using testing::TFirebirdFolder;
using testing::TPrivateFirebird;
using namespace std::chrono_literals;

const std::vector<std::string> kShop = {
    "create table SHOP (CODE char(2) character set octets, PRICE numeric(9,2), NAME varchar(9) not null, "
    "IMAGE blob, NOTE blob sub_type text)",
    "insert into SHOP (CODE, NAME) values (x'00ff', 'zwölf')", "insert into SHOP (PRICE, NAME) values (1.5, 'b')"};

std::unique_ptr<TDBConnInterbase> Engine(const std::string& database, const std::string& server = {},
                                         const std::string& password = TPrivateFirebird::kPassword) {
  return std::make_unique<TDBConnInterbase>(NewFirebirdDatabase(), server, database, "SYSDBA", password);
}

std::unique_ptr<TIBODatabase> Client(const std::string& database, const std::string& server = {}) {
  std::unique_ptr<TIBODatabase> client = NewFirebirdDatabase();
  client->DatabaseName = database;
  client->SetParam(kServerParam, server);
  client->SetParam(kUserNameParam, "SYSDBA");
  client->Password = TPrivateFirebird::kPassword;
  return client;
}

void Fetch(TDBConn& engine, const std::string& table) {
  engine.meta().GotoTable(table);
  engine.FetchIfNeeded();
}

class InterbaseFileTest : public ::testing::Test {
 protected:
  TFirebirdFolder folder_;
};

TEST_F(InterbaseFileTest, RowsAreThereUntilTheyAreClosedAndHinderNobody) {
  const auto engine = Engine(folder_.NewDatabase("r.fdb", kShop));
  engine->Connect();
  TTableGuard rows(*engine, "SHOP");
  const std::unique_ptr<TDBConn> other = engine->Clone();
  other->StartTransaction();
  EXPECT_FALSE(engine->InTransaction());
  other->Rollback();
  other->DropTable("SHOP");
  EXPECT_EQ(rows->RecordCount(), 2);
  rows->Next();
  EXPECT_EQ(RowText(*rows), "-|1.50|b|-|-");
  rows->First();
  EXPECT_EQ(VarToText(rows->FieldByName("name").value), "zwölf");
}

TEST_F(InterbaseFileTest, WhatATransactionHoldsIsWaitedForAndNotForEver) {
  const std::string path = folder_.NewDatabase("w.fdb", {"create table T (A integer)", "insert into T values (1)"});
  const auto holder = Client(path), waiter = Client(path);
  waiter->LockTimeout = 1;
  holder->SetConnected(true);
  waiter->SetConnected(true);
  holder->StartTransaction();
  holder->Execute("update T set A = 2");
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_THAT(MessageOf([&] { waiter->Execute("drop table T"); }), HasSubstr("in use"));
  EXPECT_THAT(MessageOf([&] { waiter->Execute("update T set A = 3"); }),
              HasSubstr("update conflicts with concurrent update"));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 8s);
  holder->Commit();
  waiter->Execute("drop table T");
}

TEST_F(InterbaseFileTest, WhatCannotBeOpened) {
  const std::string whole = folder_.NewDatabase("whole.fdb");
  const std::string text = folder_.Path() + "/text.fdb", cut = folder_.Path() + "/cut.fdb";
  WriteFileText(text, std::string(10000, 'x'));
  WriteFileText(cut, ReadFileBytes(whole, 20000));
  const struct {
    std::string database;
    const char* message;
  } kCases[] = {{folder_.Path() + "/none.fdb", "No such file or directory"},
                {text, "is not a valid database"},
                {cut, "I/O error"},
                {folder_.Path(), "I/O error"},
                {"", "I/O error"}};
  for (const auto& test : kCases) {
    const auto engine = Engine(test.database);
    EXPECT_THAT(MessageOf([&] { engine->Connect(); }), HasSubstr(test.message)) << test.database;
    EXPECT_FALSE(engine->GetConnected());
    EXPECT_EQ(MessageOf([&] { engine->OpenQuery("select 1 from rdb$database"); }), "Not connected");
    engine->Disconnect();
  }
}

TEST(FirebirdLibraryTest, WhatIsToBeInstalledIsSaid) {
  for (const char* file : {"libnone.so.2", "libc.so.6"})  // which is none, and one of something else
    EXPECT_THAT(MessageOf([file] { LoadFirebirdLibrary(file); }),
                ::testing::AllOf(HasSubstr(file), HasSubstr("libfbclient2")));
}

// --- A server

TEST(InterbaseServerTest, ReadsAsAFileDoesAndRefusesStrangers) {
  TPrivateFirebird server;
  const std::string path = server.Folder().NewDatabase("shop.fdb", kShop);
  const auto engine = Engine(path, server.Server());
  engine->Connect();
  const std::unique_ptr<TDBConn> second = engine->Clone();
  for (TDBConn* each : {static_cast<TDBConn*>(engine.get()), second.get()}) {
    Fetch(*each, "SHOP");
    EXPECT_EQ(DumpMeta(each->meta()),
              "table SHOP fetched\ncolumn CODE <CHAR>(2,0)\ncolumn PRICE <DECIMAL>(9,2)\ncolumn NAME <VARCHAR>(9,0) "
              "notnull\ncolumn IMAGE <BYTES>(8,0)\ncolumn NOTE <BYTES>(8,0)\n");
  }
  TTableGuard rows(*engine, "SHOP");
  EXPECT_THAT(RowText(*rows), HasSubstr("|zwölf|"));
  second->DropTable("SHOP");
  second->Disconnect();
  EXPECT_EQ(RowText(*engine->OpenQuery("select count(*) from mon$attachments where mon$user = 'SYSDBA' and "
                                       "mon$system_flag = 0")),
            "1");

  const struct {
    std::string database, server, password;
    const char* message;
  } kCases[] = {{path, server.Server(), "wrong", "user name and password are not defined"},
                {path, server.Server(), "", "user name and password are not defined"},
                {path + "x", server.Server(), TPrivateFirebird::kPassword, "No such file or directory"},
                {path, "127.0.0.1/" + std::to_string(testing::FreePort()), "x", "Failed to establish a connection"}};
  for (const auto& test : kCases) {
    const auto refused = Engine(test.database, test.server, test.password);
    const std::string message = MessageOf([&] { refused->Connect(); });
    EXPECT_THAT(message, HasSubstr(test.message));
    EXPECT_THAT(message, Not(HasSubstr(TPrivateFirebird::kPassword)));
    EXPECT_FALSE(refused->GetConnected());
  }
}

TEST(InterbaseServerTest, AServerThatIsGone) {
  TPrivateFirebird server;
  const std::string path = server.Folder().NewDatabase("shop.fdb", kShop);
  const auto fetching = Client(path, server.Server()), waiting = Client(path, server.Server());
  fetching->SetConnected(true);
  waiting->SetConnected(true);
  waiting->StartTransaction();
  std::thread killer([&server] {
    std::this_thread::sleep_for(300ms);
    server.Kill();
  });
  // Rows for much longer than the server lives.
  EXPECT_THAT(MessageOf([&] { fetching->Read("select a.rdb$type from rdb$types a, rdb$types b, rdb$types c"); }),
              HasSubstr("Error reading data from the connection"));
  killer.join();
  EXPECT_FALSE(fetching->GetConnected());
  EXPECT_THAT(MessageOf([&] { waiting->Read("select 1 from rdb$database"); }), HasSubstr("the connection"));
  EXPECT_FALSE(waiting->GetConnected() || waiting->InTransaction());
  EXPECT_EQ(MessageOf([&] { waiting->Execute("drop table TRUTH"); }), "Not connected");
  EXPECT_THAT(MessageOf([&] { waiting->SetConnected(true); }), HasSubstr("Failed to establish a connection"));
}

TEST(InterbaseServerTest, WhoDoesNotReactIsNotWaitedForForEver) {
  TFirebirdFolder folder;
  // A listener whose queue is full behaves as a machine that is switched off does: nothing comes back.
  std::array<int, 4> silent{};
  for (int& each : silent) each = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  sockaddr_in address{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
  auto* place = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof(address);
  ASSERT_EQ(bind(silent[0], place, size) | listen(silent[0], 0) | getsockname(silent[0], place, &size), 0);
  for (std::size_t i = 1; i < silent.size(); ++i) static_cast<void>(connect(silent[i], place, size));
  testing::TLoopbackServer listening([](int connection) {  // and never answers the login
    char byte = 0;
    while (read(connection, &byte, 1) == 1) continue;
  });
  const std::string port = std::to_string(ntohs(address.sin_port));
  const std::pair<std::string, std::string> kCases[] = {
      {"127.0.0.1/" + port, "The server 127.0.0.1/" + port + " did not react within 1 seconds"},
      {"[127.0.0.1]/" + port, "The server [127.0.0.1]/" + port + " did not react within 1 seconds"},
      {"127.0.0.1/" + std::to_string(listening.Port()), "rejected by remote interface"}};
  for (const auto& [server, message] : kCases) {
    const auto client = Client("/x.fdb", server);
    client->ConnectTimeout = 1;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THAT(MessageOf([&] { client->SetConnected(true); }), HasSubstr(message));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
    EXPECT_FALSE(client->GetConnected());
  }
  for (const int each : silent) close(each);
}

}  // namespace
}  // namespace velmora
