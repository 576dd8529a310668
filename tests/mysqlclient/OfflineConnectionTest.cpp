// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/OfflineConnection.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "core/Meta.h"
#include "engines/mysql/OfflineEngine.h"
#include "mysqlclient/mysqlUtil.h"
#include "support/MessageOf.h"
#include "support/MetaBuilder.h"
#include "support/MetaDump.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Text.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using testing::MessageOf;
using testing::Shape;
using testing::TScratchFolder;
using namespace std::string_literals;

constexpr char kScript[] =
    "create table `B c` (\n  `id` int(11) NOT NULL\n) ENGINE=InnoDB;\n"
    "create table d.a (x int) engine=MyISAM;\n";

class OfflineConnection : public ::testing::Test {
 protected:
  OfflineConnection() { WriteFileText(path, kScript); }

  std::string Refusal() const {
    return path + " is a script file: it cannot run statements; to change a database, name its server (mysql://...)";
  }
  static TStringList Tables(TMyConnection& shown) {
    TStringList list;
    MySqlQueryList("show tables", list, shown);
    return list;
  }
  // Other content of the same length, and the old time of change.
  void RewriteUnseen(const std::string& text) {
    const auto time = std::filesystem::last_write_time(path);
    std::ofstream(path, std::ios::binary | std::ios::in) << text;
    std::filesystem::last_write_time(path, time);
  }

  TScratchFolder folder;
  std::string path = folder / "s.sql";
  TOfflineConnection connection{path};
};

TEST_F(OfflineConnection, AnswersAsAServer) {
  connection.SetConnected(true);
  EXPECT_EQ(Tables(connection), (TStringList{"B c", "a"}));
  std::vector<TVariant> row;
  for (const char* sql : {"show create table `B c`", "SHOW CREATE TABLE `b C`", " show create table B c "}) {
    EXPECT_EQ(MySqlQueryRow(sql, connection, row), 1);
    EXPECT_EQ(row, (std::vector<TVariant>{"B c"s, "create table `B c` (\n  `id` int(11) NOT NULL\n) ENGINE=InnoDB"s}))
        << sql;
  }
  EXPECT_EQ(MessageOf([&] { MySqlQueryRow("show create table `x`", connection, row); }), "Table 'x' doesn't exist");
}

TEST_F(OfflineConnection, RunsNothing) {
  const auto query = connection.NewQuery();
  for (const bool connected : {false, true}) {
    connection.SetConnected(connected);
    const std::string refusal = connected ? Refusal() : "Not connected";
    for (const char* sql : {"select 1", "show databases", "", "show create table"}) {
      query->SQL = sql;
      EXPECT_EQ(MessageOf([&] { query->Open(); }), refusal) << sql;
    }
    query->SQL = "show tables";
    EXPECT_EQ(MessageOf([&] { query->Execute(); }), refusal);
    EXPECT_EQ(MessageOf([&] { query->Open(); }), connected ? "nothing raised" : refusal);
  }
  EXPECT_EQ(MessageOf([&] { connection.StartTransaction(); }), Refusal());
  EXPECT_EQ(MessageOf([&] { connection.Commit(); }), Refusal());
  EXPECT_EQ(MessageOf([&] { connection.Rollback(); }), Refusal());
  EXPECT_FALSE(connection.InTransaction());
}

TEST_F(OfflineConnection, QueryIsADatasetFromOpenToClose) {
  const auto query = connection.NewQuery();
  EXPECT_TRUE(query->Eof() && query->Fields().empty());
  connection.SetConnected(true);
  query->SQL = "show tables";
  query->Open();
  query->Next();
  EXPECT_EQ(query->Value(0), TVariant("a"s));
  query->Open();
  EXPECT_EQ(query->Value(0), TVariant("B c"s));
  query->Close();
  EXPECT_FALSE(query->Active());
  EXPECT_TRUE(query->Eof() && VarIsNull(query->Value(0)) && query->Fields().size() == 1);
  EXPECT_EQ(query->RecordCount(), 0);
}

TEST_F(OfflineConnection, ReadsTheFileAgainOnlyWhenItChanged) {
  connection.SetConnected(true);
  const std::string other = StrReplace(kScript, "B c", "C d");
  RewriteUnseen(other);
  connection.SetConnected(false);
  connection.SetConnected(true);
  EXPECT_EQ(Tables(connection).front(), "B c");
  const auto second = connection.NewConnection();
  EXPECT_FALSE(second->GetConnected());
  second->SetConnected(true);
  EXPECT_EQ(Tables(*second).front(), "B c");

  WriteFileText(path, other + "create table e (a int);");
  second->SetConnected(false);
  second->SetConnected(true);
  EXPECT_EQ(Tables(*second), (TStringList{"C d", "a", "e"}));
  EXPECT_EQ(Tables(connection).front(), "B c");
}

TEST_F(OfflineConnection, ReadsAPipeOnce) {
  const std::string pipe = folder / "p.sql";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&pipe] { std::ofstream(pipe) << kScript; });
  TOfflineConnection piped(pipe);
  piped.SetConnected(true);
  writer.join();
  piped.SetConnected(false);
  piped.SetConnected(true);
  EXPECT_EQ(Tables(piped), (TStringList{"B c", "a"}));
}

TEST_F(OfflineConnection, FailsToConnect) {
  bool asked = false;
  connection.BeforeConnect = [&asked] { asked = true; };
  std::filesystem::remove(path);
  EXPECT_EQ(MessageOf([&] { connection.SetConnected(true); }), "Cannot read " + path + ": No such file or directory");
  EXPECT_TRUE(asked);
  EXPECT_FALSE(connection.GetConnected());
  WriteFileText(path, "create table a (b int) comment 'x");
  EXPECT_EQ(MessageOf([&] { connection.SetConnected(true); }), path + ": line 1: unclosed ' quote");
  EXPECT_TRUE(connection.Warnings().empty());
  WriteFileText(path, "");
  connection.SetConnected(true);
  EXPECT_EQ(connection.Warnings().size(), 1u);
}

// --- The engine over such a connection

class OfflineEngine : public OfflineConnection {
 protected:
  static std::string NameOf(TDBConn& conn) {
    std::string text;
    conn.GetDisplayName(text);
    return text;
  }
  TDBConnMySQLOffline engine{path};
};

TEST_F(OfflineEngine, ReadsAndShowsItselfByItsPath) {
  EXPECT_EQ(NameOf(engine), path);
  EXPECT_EQ(engine.GetEngine(), 8);
  engine.Connect();
  engine.meta().FindColumn("A", "x");
  EXPECT_EQ(DumpMeta(engine.meta()), "table B c\ntable a MyISAM fetched\ncolumn x <I4>\n");
  std::string text;
  engine.meta().CachedTableDDL("a", text);
  EXPECT_EQ(text, "create table a (x int) engine=MyISAM");
  EXPECT_EQ(MessageOf([&] { engine.TruncateTable("a"); }), Refusal());
  TStringList list;
  EXPECT_EQ(MessageOf([&] { engine.ListDatabases(list); }), Refusal());
}

TEST_F(OfflineEngine, CloneSharesTheFile) {
  engine.Connect();
  RewriteUnseen(StrReplace(kScript, "B c", "C d"));
  const std::unique_ptr<TDBConn> clone = engine.Clone();
  EXPECT_EQ(NameOf(*clone), path);
  EXPECT_EQ(DumpMeta(clone->meta()), "table B c\ntable a\n");
  EXPECT_EQ(MessageOf([&] { clone->StartTransaction(); }), Refusal());
}

TEST_F(OfflineEngine, AFetchThatFailsForgetsTheRowsThatStoodThere) {
  engine.ParseDDL("create table t (a int not null, key k (a)) type=x; alter table t add b int;");
  EXPECT_EQ(Shape(engine.meta(), "t"), "t(a,b) key k(a)");
  std::string ddl;
  EXPECT_EQ(MessageOf([&] { engine.meta().CachedTableDDL("t", ddl); }), "Not connected");
  EXPECT_EQ(engine.meta().tColumns.TotalCount(), 2u);
  engine.meta().InvalidateTable("t");
  EXPECT_EQ(MessageOf([&] { engine.meta().FindColumn("t", "a"); }), "Not connected");
  EXPECT_EQ(engine.meta().tColumns.TotalCount() + engine.meta().tKeyFields.TotalCount(), 0u);
}

}  // namespace
}  // namespace velmora
