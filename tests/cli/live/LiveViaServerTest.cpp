// The companion with a reference that the target's server reads, and what becomes of the scratch database.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "support/LiveCompanion.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using testing::Answer;
using ::testing::ContainsRegex;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using testing::TAnswer;
using testing::TLiveDatabase;
using testing::TPrivateServer;

constexpr char kIdentical[] = "Databases are identical. Nothing to synchronize.\n";
constexpr char kCases[] = VELMORA_SOURCE_DIR "/tests/data/viaserver";

class LiveViaServerTest : public testing::TLiveCompanion {
 protected:
  ~LiveViaServerTest() override {
    if (child_ == 0) return;
    kill(child_, SIGKILL);  // a failed assertion left it
    waitpid(child_, nullptr, 0);
  }

  TAnswer Via(const std::string& command, const std::string& file, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments = {command, file, Source("via"), "--dialect", "exact", "--via-server"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Run(arguments);
  }
  std::string Ask(const std::string& query) { return Answer(target_.Connection(), query); }
  std::string Scratch() {
    return Ask(
        "select group_concat(schema_name) from information_schema.schemata where "
        "schema_name like 'velmora%'");
  }

  // A comparison in a process of its own that has much to do, under way when this returns.
  void StartLongRun() {
    std::string tables;
    for (int i = 0; i < 3000; ++i) tables += "create table t" + std::to_string(i) + " (a int);\n";
    const std::string file = File("long.sql", tables);
    child_ = fork();
    if (child_ == 0) {
      if (freopen((folder_ / "out").c_str(), "w", stdout) == nullptr ||
          freopen((folder_ / "err").c_str(), "w", stderr) == nullptr)
        _exit(99);
      execl(VELMORA_CLI, VELMORA_CLI, "compare", file.c_str(), Source("via").c_str(), "--dialect", "exact",
            "--via-server", "--socket", TPrivateServer::Shared().Socket().c_str(), nullptr);
      _exit(98);
    }
    for (int i = 0; i < 3000; ++i) {
      if (Ask("select count(*) > 5 from information_schema.tables where table_schema like 'velmora%'") == "1") return;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    FAIL() << "no scratch database";
  }
  TAnswer End(int signal) {
    kill(child_, signal);
    int status = 0;
    waitpid(child_, &status, 0);
    child_ = 0;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFileText(folder_ / "out"), ReadFileText(folder_ / "err")};
  }

  TLiveDatabase target_{"via"};
  pid_t child_ = 0;
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
    const TAnswer same = Run({"compare", entry.path(), Source("shop"), "--dialect", "exact", "--via-server"});
    EXPECT_EQ(same.out, kIdentical) << same.err;

    target_.Run("alter database via character set latin1");
    const TAnswer made = Via("sync", entry.path(), {"--yes", "--allow-unsafe", "--verify-on-server"});
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_THAT(made.out, EndsWith(kIdentical));
    EXPECT_EQ(Scratch(), "");
  }
  target_.Run("set global explicit_defaults_for_timestamp = 1");
}

TEST_F(LiveViaServerTest, WhatTheServerRefusesIsNamedAndItsTablesStay) {
  for (const char* table : {"kept", "again", "likewise", "renamed", "here", "gone"})
    target_.Run(std::string("create table ") + table + " (a int)");
  const std::string statements =
      "create table here (a int);\ncreate table kept (a nosuch);\n"
      "create table likewise like kept;\nalter table here add b int;\n"
      "create table again (a int);\nalter table again add a int;\n"
      "alter table again add b int;\nrename table again to renamed;\n"
      "create table u (a nosuch);\ndrop table if exists u;\ndrop table v;\n"
      "create table u (a int);\n";
  const std::string tables =
      "select group_concat(table_name, ' ', (select count(*) from information_schema.columns c where "
      "c.table_schema = t.table_schema and c.table_name = t.table_name) order by 1) from "
      "information_schema.tables t where table_schema = 'via'";
  // What such a call may have changed is not known, so that only new tables come.
  const std::string calls = File("calls.sql", statements + "call fill();\n");
  const TAnswer left = Via("sync", calls, {"--yes", "--allow-unsafe"});
  EXPECT_EQ(left.status, 2);
  EXPECT_THAT(left.err, HasSubstr(calls + ": line 13: \"call fill()\" is not run"));
  EXPECT_EQ(Ask(tables), "again 1,gone 1,here 1,kept 1,likewise 1,renamed 1,u 1");

  const std::string file = File("faulty.sql", statements);
  const TAnswer answer = Via("sync", file, {"--yes", "--allow-unsafe", "--verify-on-server"});
  EXPECT_EQ(answer.status, 2);
  EXPECT_THAT(answer.err, AllOf(HasSubstr("table kept is skipped: " + file + ": line 2: Unknown data type: 'nosuch'\n"),
                                HasSubstr("table again is skipped: " + file + ": line 6: Duplicate column name 'a'\n"),
                                HasSubstr("table likewise is skipped: " + file + ": line 3: table kept, which "),
                                HasSubstr("table renamed is skipped: " + file + ": line 8: table again, which "),
                                HasSubstr("verified on the server: 0 differences left in the tables that were")));
  EXPECT_EQ(Ask(tables), "again 1,here 2,kept 1,likewise 1,renamed 1,u 1");
  EXPECT_EQ(Scratch(), "");
}

TEST_F(LiveViaServerTest, WhatReachesOutsideIsRefusedBeforeAnythingIsMade) {
  target_.Run("create table stays (a int)");
  const std::string bad = File("bad.sql",
                               "create table a (x int);\ncreate table mysql.b (x int);\n"
                               "create table c (x int) data directory='/tmp';\n"
                               "create table d as select * from mysql.user;\n");
  const struct {
    std::vector<std::string> arguments;
    std::string told;
  } cases[] = {
      {{"sync", bad, Source("via"), "--yes", "--allow-unsafe"},
       bad + ": line 2: table b: it names the database mysql, which is not the file's own\n  " + bad +
           ": line 3: table c: it says data directory, which reaches outside of its database\n  " + bad +
           ": line 4: table d: it takes rows or columns from a query (select)\n"},
      {{"compare", Source("via"), Source("via")}, "--via-server takes a reference that ends in .sql and a target on a"},
      {{"compare", bad, bad}, "--via-server takes a reference that ends in .sql and a target on a server\n"},
      {{"compare", bad, Source("via"), "--dialect", "standard"}, "Only the exact dialect can read a reference by the"},
      {{"sync", bad, Source("via"), "--yes", "--script", bad}, "--via-server excludes --script"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> arguments = c.arguments;
    arguments.push_back("--via-server");
    if (std::find(arguments.begin(), arguments.end(), "--dialect") == arguments.end())
      arguments.insert(arguments.end(), {"--dialect", "exact"});
    const TAnswer answer = Run(arguments);
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(answer.err, HasSubstr(c.told));
  }
  EXPECT_EQ(Ask("show tables"), "stays");
}

TEST_F(LiveViaServerTest, SignalsRemoveTheScratchDatabaseAndWhatAKilledRunLeftIsNamed) {
  for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
    StartLongRun();
    const TAnswer answer = End(signal);
    EXPECT_EQ(answer.status, 2) << answer.err;
    EXPECT_THAT(answer.err, EndsWith("velmora-cli: Cancelled\n"));
    EXPECT_EQ(answer.out, "");
    EXPECT_EQ(Scratch(), "");
  }
  const std::string file = File("one.sql", "create table t (a int)");
  StartLongRun();
  const std::string name = Scratch();
  EXPECT_THAT(Via("compare", file).err, Not(HasSubstr(name))) << "it is in use";
  End(SIGKILL);
  for (int i = 0; i < 500 && Ask("select is_free_lock('" + name + "')") != "1"; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_THAT(Via("compare", file).err, HasSubstr("warning: the scratch database " + name + " is still on the server"));
  EXPECT_EQ(Scratch(), name) << "nobody but the user removes it";
  target_.Run("drop database " + name);
}

TEST(LiveBinaryLogTest, ScratchStatementsStayOutOfItOrThatIsSaid) {
  TPrivateServer server({"--log-bin=bin", "--server-id=3"});
  TLiveDatabase target("via", server);
  target.Run("create user 'plain'@'localhost'");
  target.Run("grant all on via.* to 'plain'@'localhost'");
  target.Run("grant all on `velmora\\_scratch\\_%`.* to 'plain'@'localhost'");
  testing::TScratchFolder folder;
  WriteFileText(folder / "f.sql", "create table t (a int)");
  const std::string position = Answer(target.Connection(), "select @@gtid_binlog_pos");
  for (const std::string user : {"root", "plain"}) {
    const TAnswer answer = testing::RunInProcess({"compare", folder / "f.sql", "mysql://" + user + ":@localhost/via",
                                                  "--dialect", "exact", "--via-server", "--socket", server.Socket()});
    EXPECT_EQ(answer.status, 1) << answer.err;
    const bool logged = Answer(target.Connection(), "select @@gtid_binlog_pos") != position;
    EXPECT_EQ(logged, user == "plain");
    EXPECT_EQ(answer.err.find("goes to the server's binary log") != std::string::npos, logged) << answer.err;
  }
}

}  // namespace
}  // namespace velmora
