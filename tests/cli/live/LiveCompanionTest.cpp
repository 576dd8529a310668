// SPDX-License-Identifier: GPL-3.0-or-later

// What the companion does with more than a file of cases can hold.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/LiveCompanion.h"
#include "util/Format.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::LiveSource;
using testing::RunLive;
using testing::TAnswer;
using testing::TLiveDatabase;
using testing::TPrivateServer;

class LiveCompanionTest : public testing::TLiveCompanion {};

// A statement that the server does not take is named with its size, however the server says so.
TEST_F(LiveCompanionTest, AStatementBeyondThePacketLimitIsNamedWithItsSize) {
  TLiveDatabase database("packets");
  const std::string script = File("s.sql", "set @a = 1;\nset @b = '" + std::string(20 << 20, 'x') + "';\n");
  for (const std::string& source : {LiveSource("packets"), LiveSource("packets", TPrivateServer::Shared().Port())}) {
    const TAnswer answer = RunLive({"sync", "--dialect", "standard", "unused", source, "--script", script, "--yes"});
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(answer.err, HasSubstr("statement 2 of 2 failed at line 2, column 1: set @b = 'xx"));
    EXPECT_THAT(answer.err, ::testing::ContainsRegex("velmora-cli: (Server has gone away|Lost connection.*|"
                                                     "Got a packet bigger than 'max_allowed_packet' bytes)\n"));
    EXPECT_THAT(answer.err,
                HasSubstr("that statement has 20971531 bytes, which is too large for the server, and was not "
                          "run: max_allowed_packet, which is 16777216 bytes, must be raised\n"));
  }
}

TEST_F(LiveCompanionTest, ADefaultCountsByASequenceThatTheTargetHas) {
  if (testing::OnMySQL()) GTEST_SKIP() << "this server has no sequences";
  TLiveDatabase reference("counted");
  TLiveDatabase target("counting");
  for (const char* statement :
       {"create sequence s", "create sequence mine", "create table z (a int default nextval(s))",
        "create table own (a int default nextval(mine))", "create table plain (a int)"})
    reference.Run(statement);
  target.Run("create sequence s");
  target.Run("create table z (a int default nextval(counted.s))");
  const auto run = [](const std::string& command) {
    return RunLive({command, LiveSource("counted"), LiveSource("counting"), command == "sync" ? "--yes" : "--quiet"});
  };
  const TAnswer made = run("sync");
  EXPECT_THAT(made.err, HasSubstr("table own is skipped: column a counts by sequence counting.mine, which the target"));
  EXPECT_EQ(testing::Answer(target.Connection(),
                            "select column_default from information_schema.columns where "
                            "table_schema = database() and table_name = 'z'"),
            "nextval(`counting`.`s`)");
  target.Run("create sequence mine");
  EXPECT_EQ(run("sync").status, 0);
  EXPECT_EQ(run("compare").out, "Databases are identical. Nothing to synchronize.\n");
}

TEST_F(LiveCompanionTest, ALimitOfRowsLeavesTheRestOnTheServer) {
  TLiveDatabase database("limits");
  database.Run("create view v as select seq, repeat('x', 100) as text from " + testing::Numbers(1000000));
  const auto sent = [&] {
    return std::stoll(testing::Answer(database.Connection(), "show global status like 'Bytes_sent'"));
  };
  const long long before = sent();
  const TAnswer answer = RunLive({"rows", LiveSource("limits"), "v", "--limit", "5"});
  EXPECT_EQ(answer.status, 0) << answer.err;
  EXPECT_EQ(std::count(answer.out.begin(), answer.out.end(), '\n'), 6);
  EXPECT_LT(sent() - before, 20'000'000) << "of some 110 MB";
}

}  // namespace
}  // namespace velmora
