// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <thread>

#include "mysqlclient/MyClients.h"
#include "mysqlclient/Waiting.h"
#include "mysqlclient/mysqlUtil.h"
#include "support/LiveDatabase.h"
#include "support/LoopbackServer.h"
#include "support/MessageOf.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using std::chrono::milliseconds;
using testing::Answer;
using testing::Execute;
using testing::MessageOf;
using testing::TPrivateServer;
using TSteady = std::chrono::steady_clock;

constexpr int kInterrupted = 1317;

// A connection whose calls are waited for by a pump that the test gives.
class LiveWaitingTest : public testing::TWithBothClients {
 protected:
  std::unique_ptr<TMyConnection> Waiting(TPrivateServer& server = TPrivateServer::Shared()) {
    auto connection = testing::ServerConnection(server);
    connection->Waiting = waiting_;
    return connection;
  }
  std::unique_ptr<TMyConnection> Connected(TPrivateServer& server = TPrivateServer::Shared()) {
    auto connection = Waiting(server);
    connection->SetConnected(true);
    return connection;
  }
  // Runs a statement that has to fail; gives the number of its error.
  static int NumberOf(TMyConnection& connection, const std::string& sql) {
    try {
      Execute(connection, sql);
    } catch (const EMySqlException& error) {
      return error.Number();
    }
    return 0;
  }
  void CancelAfter(milliseconds time) {
    on_pump_ = [this, time] {
      if (waiting_->Waited() > time && cancels_ < 1) ++cancels_, waiting_->Cancel();
    };
  }

  int pumped_ = 0;
  int cancels_ = 0;
  std::function<void()> on_pump_;
  std::shared_ptr<TWaiting> waiting_ = std::make_shared<TWaiting>([this] {
    EXPECT_EQ(std::this_thread::get_id(), here_);
    ++pumped_;
    if (on_pump_) on_pump_();
  });
  std::thread::id here_ = std::this_thread::get_id();
};

INSTANTIATE_TEST_SUITE_P(Clients, LiveWaitingTest, ::testing::Bool(), testing::ClientName);

TEST_P(LiveWaitingTest, MessagesRunWhileAStatementDoesAndResultsAreTheSame) {
  auto connection = Connected();
  EXPECT_EQ(Answer(*connection, "select sleep(0.4)"), "0");
  EXPECT_GT(pumped_, 2);  // however busy the machine is
  EXPECT_EQ(waiting_->Waited(), std::nullopt);
  EXPECT_EQ(NumberOf(*connection, "select mysql.no_such_function()"), 1305);

  const auto rows = connection->NewQuery();  // in blocks, with another statement in between
  rows->UniDirectional = true;
  rows->FetchAll = false;
  rows->FetchRows = 3;
  rows->SQL = "select 1 union all select 2 union all select 3 union all select 4 union all select 5";
  rows->Open();
  rows->Next();
  EXPECT_EQ(Answer(*connection, "select 'between'"), "between");
  std::string read;
  for (; !rows->Eof(); rows->Next()) read += VarToText(rows->Value(0));
  EXPECT_EQ(read, "2345");

  connection->StartTransaction();
  EXPECT_EQ(connection->TransactionOpen(true), true);
  Execute(*connection, "select cast('x' as signed)");
  EXPECT_EQ(connection->WarningCount(), 1u);
  connection->Rollback();
}

TEST_P(LiveWaitingTest, AStatementThatWaitsForALockIsBrokenOffAndTheConnectionGoesOn) {
  const testing::TLiveDatabase database("waiting");
  auto holder = testing::ServerConnection(TPrivateServer::Shared(), database.Name());
  holder->SetConnected(true);
  Execute(*holder, "create table t (a int) engine=InnoDB");
  holder->StartTransaction();
  Answer(*holder, "select count(*) from t");  // holds the table's structure
  auto connection = Connected();
  CancelAfter(milliseconds(300));
  const auto start = TSteady::now();
  EXPECT_EQ(NumberOf(*connection, "alter table waiting.t add b int"), kInterrupted);
  EXPECT_LT(TSteady::now() - start, std::chrono::seconds(20));
  EXPECT_TRUE(connection->GetConnected());
  EXPECT_EQ(Answer(*connection, "select 1"), "1");
  holder->Rollback();
}

TEST_P(LiveWaitingTest, ADeadServerIsSaidToBeLostAndAHungOneIsCutOff) {
  TPrivateServer server;
  auto connection = Connected(server);
  on_pump_ = [&] {
    if (pumped_ == 5) server.Kill();
  };
  EXPECT_NE(NumberOf(*connection, "do sleep(60)"), 0);
  EXPECT_FALSE(connection->GetConnected());

  // One that takes nobody in any more: the second login fails, and the connection is cut.
  server.Restart();
  on_pump_ = nullptr;
  auto next = Connected(server);
  Execute(*next, "create user if not exists nobody");
  Execute(*next, "alter user root@localhost account lock");
  CancelAfter(milliseconds(100));
  EXPECT_NE(NumberOf(*next, "do sleep(60)"), kInterrupted);
  EXPECT_FALSE(next->GetConnected());
}

TEST_P(LiveWaitingTest, ALoginToSomebodyWhoDoesNotSpeakIsGivenUp) {
  std::atomic<bool> over = false;
  {
    testing::TLoopbackServer silent([&](int) {
      while (!over) std::this_thread::sleep_for(milliseconds(10));
    });
    auto connection = Waiting();
    connection->Server = "127.0.0.1";
    connection->Port = silent.Port();
    connection->Options.Socket.clear();
    CancelAfter(milliseconds(100));
    const auto start = TSteady::now();
    EXPECT_EQ(MessageOf([&] { connection->SetConnected(true); }), "Cancelled: the login was given up");
    EXPECT_LT(TSteady::now() - start, std::chrono::seconds(5));
    EXPECT_FALSE(connection->GetConnected());
    EXPECT_EQ(TServerThread::Left(), 1);
    connection.reset();
    over = true;
  }
  for (int i = 0; i < 1000 && TServerThread::Left() > 0; ++i) std::this_thread::sleep_for(milliseconds(10));
  EXPECT_EQ(TServerThread::Left(), 0);
}

}  // namespace
}  // namespace velmora
