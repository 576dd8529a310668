// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mysqlnet/MySqlResultSet.h"
#include "mysqlnet/MySqlSession.h"
#include "support/MessageOf.h"
#include "support/PrivateServer.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::MessageOf;
using testing::Numbers;
using testing::OnMySQL;
using testing::TPrivateServer;

constexpr int kSocket = 3;
constexpr std::uint32_t kPlainOrCompressed[] = {0, kCompression};

class SessionLive : public ::testing::Test {
 protected:
  void Connect(const std::string& user = "root", const std::string& password = {}, std::uint32_t flags = 0) {
    TPrivateServer& server = TPrivateServer::Shared();
    session.current_protocol = true;
    session.connect_timeout = 10;
    session.client_flag = 0;
    session.Connect("127.0.0.1", user, password, user == "root" ? "mysql" : "information_schema", server.Port(), flags,
                    server.Socket());
  }
  void Send(const std::string& sql) {
    session.SimpleCommand(kQuery, sql, true, sql.size());
    session.ReadQueryResult();
  }
  // The first value.
  std::string Answer(const std::string& sql) {
    Send(sql);
    TMySqlResultSet rows(session);
    rows.Next();
    std::string value(rows.Value(0).value_or("null"));
    rows.Skip();
    return value;
  }
  void Run(const std::string& sql) {
    Send(sql);
    if (session.has_result) TMySqlResultSet(session).Skip();
  }

  TMySqlSession session;
};

TEST_F(SessionLive, WaysToLogIn) {
  session.protocol = kSocket;
  Connect();
  EXPECT_EQ(Answer("select connection_id()"), Format("%d", session.thread_id));
  session.protocol = 0;
  const struct {
    bool mysql;  // a way of MySQL's, or else of MariaDB's
    const char* identified;
    const char* password;
  } kWays[] = {
      {OnMySQL(), "by 'se cret'", "se cret"},
      {OnMySQL(), "by ''", ""},
      {true, "with sha256_password by 'se cret'", "se cret"},
      {false, "via mysql_old_password using '6f8c114b58f2ce9e'", "mypass"},
  };
  if (!OnMySQL()) Run("set global secure_auth = 0");
  for (const auto& [mysql, identified, password] : kWays) {
    if (mysql != OnMySQL()) continue;
    SCOPED_TRACE(identified);
    Connect();
    Run("drop user if exists joe");
    Run(Format("create user joe identified %s", identified));
    session.password.clear();
    Connect("joe", password);
    EXPECT_THAT(Answer("select current_user()"), HasSubstr("joe"));
    EXPECT_THAT(MessageOf([&] { Connect("joe", "wrong"); }), HasSubstr("Access denied for user 'joe'@"));
  }
  Connect();
  Run("drop user joe");
  if (!OnMySQL()) Run("set global secure_auth = 1");
}

TEST_F(SessionLive, LongPacketsAndFrames) {
  Connect();
  Run("set global max_allowed_packet = 67108864");
  for (const std::uint32_t flags : kPlainOrCompressed) {
    Connect("root", "", flags);
    EXPECT_EQ(session.net.compress, flags != 0);
    const std::string start = "select length('", end = "')";
    const std::size_t whole = MAX_PACKET_LENGTH - 1 - start.size() - end.size();  // fills the packet
    for (const std::size_t size : {whole - 1, whole, whole + 1, 2 * MAX_PACKET_LENGTH}) {
      std::string sql = start;
      for (std::size_t i = 0; sql.size() < start.size() + size; ++i)
        sql += static_cast<char>('a' + (i * i * 7 + i / 26) % 26);
      EXPECT_EQ(Answer(sql + end), Format("%d", size));
    }
    for (const std::size_t size : {0xFFFFFAU, 0xFFFFFBU, 0xFFFFFCU, 40000000U}) {
      Send(Format("select repeat('z', %d), 'end'", size));
      TMySqlResultSet rows(session);
      rows.FetchAll();
      ASSERT_TRUE(rows.Next());
      EXPECT_EQ(rows.Value(0)->size(), size);
      EXPECT_EQ(rows.Value(1), "end");
    }
  }
}

// With compression the server numbers plain packets anew with each result.
TEST_F(SessionLive, FurtherResults) {
  Connect();
  Run("drop procedure if exists test_p");
  Run(Format("create procedure test_p() begin select 1; select seq, repeat('x', 100) from %s; end", Numbers(2000)));
  for (const std::uint32_t flags : kPlainOrCompressed) {
    Connect("root", "", flags | kMultiResults);
    Send("call test_p()");
    for (const std::size_t count : {1U, 2000U}) {
      TMySqlResultSet rows(session);
      rows.FetchAll();
      EXPECT_EQ(rows.RowCount(), count);
      ASSERT_TRUE(session.HasMoreResults());
      session.ReadQueryResult();
    }
    EXPECT_FALSE(session.has_result || session.HasMoreResults());
  }
  Run("drop procedure test_p");
}

TEST_F(SessionLive, LocalFileThatWasOffered) {
  const testing::TScratchFolder folder;
  const std::string load = Format("load data local infile '%s' into table t", folder / "rows.txt");
  std::string content;
  for (int i = 0; i < 5000; ++i) content += Format("row %d\n", i);
  WriteFileText(folder / "rows.txt", content);
  for (const std::uint32_t flags : kPlainOrCompressed) {
    session.local_file = folder / "rows.txt";
    Connect("root", "", flags);
    Run("set global local_infile = 1");
    Run("create temporary table t (a text)");
    Run(load);
    EXPECT_EQ(session.affected_rows, 5000U);
    EXPECT_THAT(MessageOf([&] { Run(load); }), HasSubstr("which it was not offered"));
    EXPECT_EQ(Answer("select count(*) from t"), "5000");
  }
}

}  // namespace
}  // namespace velmora
