// SPDX-License-Identifier: GPL-3.0-or-later

// The companion with a reference that the target's server reads, and what becomes of the scratch database.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "support/LiveCompanion.h"

namespace velmora {
namespace {

using testing::Answer;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::TAnswer;
using testing::TLiveDatabase;
using testing::TPrivateServer;

constexpr char kIdentical[] = "Databases are identical. Nothing to synchronize.\n";
constexpr char kCases[] = VELMORA_SOURCE_DIR "/tests/data/viaserver";

class LiveViaServerTest : public testing::TLiveCompanion {
 protected:
  static TAnswer Via(const std::string& command, const std::string& file, const std::string& database = "via",
                     const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {command,     file,    testing::LiveSource(database),
                                          "--dialect", "exact", "--via-server"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return testing::RunLive(arguments);
  }
  std::string Ask(const std::string& query) { return Answer(target_.Connection(), query); }
  std::string Scratch() {
    return Ask("select group_concat(schema_name) from information_schema.schemata where schema_name like 'velmora%'");
  }
  // A comparison in a process of its own that has much to do, under way when this returns.
  void StartLongRun() {
    std::string tables;
    for (int i = 0; i < 3000; ++i) tables += "create table t" + std::to_string(i) + " (a int);\n";
    Start({"compare", File("long.sql", tables), testing::LiveSource("via"), "--dialect", "exact", "--via-server"});
    WaitUntil("a scratch database", [this] {
      return Ask("select count(*) > 5 from information_schema.tables where table_schema like 'velmora%'") == "1";
    });
  }

  TLiveDatabase target_{"via"};
};

// Each file of the folder: with the database that its statements make, and with an empty one of another character set.
TEST_F(LiveViaServerTest, AFileIsIdenticalWithItsOwnDatabaseAndMakesOneAnew) {
  target_.Run("set global explicit_defaults_for_timestamp = 0");
  for (const auto& entry : std::filesystem::directory_iterator(kCases)) {
    SCOPED_TRACE(entry.path());
    TLiveDatabase own("shop");
    const std::string load = "mariadb --no-defaults --user=root --socket='" + TPrivateServer::Shared().Socket() +
                             "' shop < '" + entry.path().string() + "'";
    ASSERT_EQ(std::system(load.c_str()), 0);  // NOLINT(concurrency-mt-unsafe)
    const TAnswer same = Via("compare", entry.path(), "shop");
    EXPECT_EQ(same.out, kIdentical) << same.err;

    target_.Run("alter database via character set latin1");
    const TAnswer made = Via("sync", entry.path(), "via", {"--yes", "--allow-unsafe", "--verify-on-server"});
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_THAT(made.out, EndsWith(kIdentical));
    EXPECT_EQ(Scratch(), "");
  }
  target_.Run("set global explicit_defaults_for_timestamp = 1");
}

TEST_F(LiveViaServerTest, SignalsRemoveTheScratchDatabaseAndWhatAKilledRunLeftIsNamed) {
  for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
    StartLongRun();
    Signal(signal);
    const TAnswer answer = End();
    EXPECT_EQ(answer.status, 2) << answer.err;
    EXPECT_THAT(answer.err, EndsWith("velmora-cli: Cancelled\n"));
    EXPECT_EQ(answer.out, "");
    EXPECT_EQ(Scratch(), "");
  }
  const std::string file = File("one.sql", "create table t (a int)");
  StartLongRun();
  const std::string name = Scratch();
  EXPECT_THAT(Via("compare", file).err, Not(HasSubstr(name))) << "it is in use";
  Signal(SIGKILL);
  End();
  WaitUntil("the lock is free", [&] { return Ask("select is_free_lock('" + name + "')") == "1"; });
  EXPECT_THAT(Via("compare", file).err, HasSubstr("warning: the scratch database " + name + " is still on the server"));
  EXPECT_EQ(Scratch(), name) << "nobody but the user removes it";
  target_.Run("drop database " + name);
}

TEST(LiveBinaryLogTest, ScratchStatementsStayOutOfItOrThatIsSaid) {
  std::vector<std::string> options = {"--log-bin=bin", "--server-id=3"};
  if (testing::OnMySQL()) options.insert(options.end(), {"--gtid-mode=on", "--enforce-gtid-consistency"});
  TPrivateServer server(options);
  TLiveDatabase target("via", server);
  target.Run("create user 'plain'@'localhost'");
  target.Run("grant all on via.* to 'plain'@'localhost'");
  target.Run("grant all on `velmora\\_scratch\\_%`.* to 'plain'@'localhost'");
  testing::TScratchFolder folder;
  WriteFileText(folder / "f.sql", "create table t (a int)");
  const std::string ask = testing::OnMySQL() ? "select @@gtid_executed" : "select @@gtid_binlog_pos";
  const std::string position = Answer(target.Connection(), ask);
  for (const std::string user : {"root", "plain"}) {
    const TAnswer answer = testing::RunInProcess({"compare", folder / "f.sql", "mysql://" + user + ":@localhost/via",
                                                  "--dialect", "exact", "--via-server", "--socket", server.Socket()});
    EXPECT_EQ(answer.status, 1) << answer.err;
    const bool logged = Answer(target.Connection(), ask) != position;
    EXPECT_EQ(logged, user == "plain");
    EXPECT_EQ(answer.err.find("goes to the server's binary log") != std::string::npos, logged) << answer.err;
  }
}

}  // namespace
}  // namespace velmora
