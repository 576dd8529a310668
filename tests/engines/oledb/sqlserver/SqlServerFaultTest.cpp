// SPDX-License-Identifier: GPL-3.0-or-later

// What goes wrong between the engine of SQL Server, its real ODBC driver and the server.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>

#include "core/Meta.h"
#include "engines/oledb/sqlserver/SqlServerRig.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

using ::testing::AllOf;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::Le;
using ::testing::Not;

class SqlServerFaultTest : public TSqlServerTest {
 protected:
  // What connecting raises.
  static std::string Refusal(TDBConnSQLServer conn) {
    return MessageOf([&] { conn.Connect(); });
  }

  static void ExpectInTime(const std::function<void()>& body) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_NE(MessageOf(body), "nothing raised");
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    EXPECT_THAT(taken.count(), Le(9)) << "the login may take 5 seconds";
  }
};

TEST_F(SqlServerFaultTest, RefusedLogins) {
  const struct {
    const char* database;
    const char* user;
    const char* password;
    const char* message;
  } kCases[] = {
      {"shop", "sa", "geheim", "Login failed for user 'sa'."},
      {"shop", "jörg", "geheim", "Login failed for user 'jörg'."},
      {"nowhere", "sa", "Zwölf;{=}", "Cannot open database \"nowhere\" requested by the login. The login failed."},
      {"shop", "sa", "geheim};", "takes no \"};\" in a password"},
      {"shop", "sa", "geheim Ł", "takes only letters of ISO 8859-1 in a password"},
  };
  for (const auto& c : kCases) {
    const std::string message = Refusal({server_.Place(), c.database, c.user, c.password, false});
    EXPECT_THAT(message, HasSubstr(c.message));
    EXPECT_THAT(message, Not(HasSubstr("geheim")));
  }
}

TEST_F(SqlServerFaultTest, WindowsLoginNeedsATicket) {
  setenv("KRB5CCNAME", "/nowhere", 1);
  EXPECT_THAT(Refusal({server_.Place(), "shop", "sa", "geheim", true}),
              AllOf(HasSubstr("It needs a ticket (kinit)"), Not(HasSubstr("geheim"))));
}

// In a process of its own, since the driver manager remembers for a while what it has found.
TEST_F(SqlServerFaultTest, WithoutTheDriver) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto connect = [this] {
    const TDriverFolder none(false);
    std::cerr << Refusal(Conn());
    std::_Exit(0);
  };
  EXPECT_EXIT(connect(), ::testing::ExitedWithCode(0), "install the package tdsodbc");
}

TEST_F(SqlServerFaultTest, NobodyListens) {
  const int port = TFakeTdsServer().Port();
  EXPECT_THAT(Refusal({"127.0.0.1," + std::to_string(port), "shop", "sa", "geheim", false}),
              AllOf(HasSubstr("Unable to connect"), Not(HasSubstr("geheim"))));
}

TEST_F(SqlServerFaultTest, SilentBeforeAndAtTheLogin) {
  server_.then_silent = true;
  for (const int requests : {0, 1}) {
    server_.served = requests;
    ExpectInTime([&] { Conn().Connect(); });
  }
}

// Everything that the engine asks of a connection, and in what order.
void UseAll(TDBConnSQLServer& conn) {
  conn.Connect();
  conn.meta().GotoTable("orders");
  conn.FetchIfNeeded();
  conn.StartTransaction();
  conn.ExecSQL("insert into [wide] values (1), (2)");
  conn.Commit();
  conn.OpenQuery("select * from [kinds]");
}

TEST_F(SqlServerFaultTest, TheServerGoesAwayAtEveryStep) {
  int steps = 0;
  for (bool all = false; !all; ++steps) {
    ASSERT_LT(steps, 30);
    server_.served = steps;
    TDBConnSQLServer conn = Conn();
    const std::string message = MessageOf([&] { UseAll(conn); });
    all = message == "nothing raised";
    EXPECT_THAT(message, Not(HasSubstr(server_.password)));
    if (all) continue;
    server_.served = 1 << 30;
    conn.Connect();
    EXPECT_EQ(conn.TableExists("orders"), true) << "connecting again helps, after step " << steps;
  }
  EXPECT_THAT(steps, Ge(9));
}

// Replies cut short and with bytes written over, half of them in their rows alone. The driver reads them, and breaks
// off its process at a nonsensical column type; all that is asked of us is an end: an error or a result.
TEST_F(SqlServerFaultTest, GarbledReplies) {
  constexpr int kReplies = 300;
  constexpr char kRow = '\xD1';
  constexpr std::string_view kBytes("\xFF\x7F\x80\xD1\xFD\xAA\xE3\x01\x00\x00", 10);
  std::mt19937 random(20);
  const auto below = [&](std::size_t bound) { return random() % bound; };
  server_.tamper = [&](std::string& tokens) {
    const std::size_t start = below(2) == 0 ? 0 : tokens.find(kRow);
    if (below(4) == 0) tokens.resize(start + below(tokens.size() - start));
    for (std::size_t i = below(4); i > 0 && start < tokens.size(); --i)
      tokens[start + below(tokens.size() - start)] = kBytes[below(kBytes.size())];
  };
  std::size_t errors = 0;
  for (int i = 0; i < kReplies; ++i) {
    TDBConnSQLServer conn = Conn();
    errors += MessageOf([&] {
                conn.GetConnectionObject().SetConnected(true);
                for (const auto rows = conn.OpenQuery("select * from [kinds]"); !rows->Eof(); rows->Next())
                  for (std::size_t field = 0; field < rows->Fields().size(); ++field) VarToText(rows->Value(field));
              }) != "nothing raised";
  }
  EXPECT_GT(errors, 50u);
}

}  // namespace
}  // namespace velmora::testing
