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
#include "support/LoopbackServer.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/PrivateFirebird.h"
#include "support/PrivateServer.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::MessageOf;
using ::testing::Not;
using testing::TFirebirdFolder;
using testing::TPrivateFirebird;
using namespace std::chrono_literals;

const std::vector<std::string> kShop = {
    "create domain D_CODE as varchar(12) not null",
    "create domain D_PRICE as numeric(9,2) default 0 check (value >= 0)",
    "create table EVERYTHING (C_SHORT smallint not null, C_LONG integer default 7, C_INT64 bigint, "
    "C_NUM4 numeric(4,1), C_NUM9 numeric(9,2), C_DEC18 decimal(18,4), C_FLOAT float, C_DOUBLE double precision, "
    "C_CHAR char(10) not null, C_VARCHAR varchar(20), C_LATIN varchar(30) character set ISO8859_1, C_NCHAR nchar(5), "
    "C_OCTETS char(4) character set octets, C_DATE date, C_TIME time, C_STAMP timestamp, C_BLOB blob, "
    "C_TEXT blob sub_type text, C_CODE D_CODE, C_PRICE D_PRICE, C_SUM computed by (C_LONG + 1), C_LIST integer[3])",
    "create table \"Lower case\" (\"a b\" integer)",
    "create table TRUTH (ID integer not null, YES boolean)",
    "create view CHEAP as select C_LONG from EVERYTHING where C_PRICE < 10",
    "create sequence NUMBERS",
    "insert into EVERYTHING (C_SHORT, C_INT64, C_NUM4, C_NUM9, C_DEC18, C_FLOAT, C_DOUBLE, C_CHAR, C_VARCHAR, C_LATIN, "
    "C_NCHAR, C_OCTETS, C_DATE, C_TIME, C_STAMP, C_BLOB, C_TEXT, C_CODE) values (-32768, -9223372036854775808, 0.5, "
    "-0.07, -99999999999999.9999, 0.5, 1e100, 'zwölf', ' in und ', 'Straße', 'né', x'00ff2000', '1899-12-29', "
    "'23:59:59', '2024-02-29 12:00:00', x'000102', 'Größe', '')",
    "insert into EVERYTHING (C_SHORT, C_CHAR, C_CODE) values (1, '', 'x')"};

constexpr char kEverything[] =
    "table EVERYTHING fetched\n"
    "column C_SHORT <I2>(0,0) notnull\n"
    "column C_LONG <I4>(0,0)\n"
    "column C_INT64 <I8>(0,0)\n"
    "column C_NUM4 <DECIMAL>(4,1)\n"
    "column C_NUM9 <DECIMAL>(9,2)\n"
    "column C_DEC18 <DECIMAL>(18,4)\n"
    "column C_FLOAT <FLOAT>(8,0)\n"
    "column C_DOUBLE <DECIMAL>(12,0)\n"
    "column C_CHAR <CHAR>(10,0) notnull\n"
    "column C_VARCHAR <VARCHAR>(20,0)\n"
    "column C_LATIN <VARCHAR>(30,0)\n"
    "column C_NCHAR <CHAR>(5,0)\n"
    "column C_OCTETS <CHAR>(4,0)\n"
    "column C_DATE <DATE>(0,0)\n"
    "column C_TIME <TIME>(0,0)\n"
    "column C_STAMP <DATE>(0,0)\n"
    "column C_BLOB <BYTES>(8,0)\n"
    "column C_TEXT <BYTES>(8,0)\n"
    "column C_CODE <VARCHAR>(12,0)\n"  // what a domain says of nulls is not asked for
    "column C_PRICE <DECIMAL>(9,2)\n"
    "column C_SUM <I8>(0,0)\n"
    "column C_LIST <I4>(0,0)\n"  // an array reads as its element
    "table Lower case\n"
    "table TRUTH\n";

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

std::string RowText(const TDataset& rows) {
  std::string text;
  for (std::size_t i = 0; i < rows.Fields().size(); ++i) {
    const TField field = rows.Field(i);
    const TMoment* moment = std::get_if<TMoment>(&field.value);
    if (i > 0) text += "|";
    text += VarIsNull(field.value) ? "-" : moment != nullptr ? DateTimeText(moment->value) : VarToText(field.value);
  }
  return text;
}

class InterbaseFileTest : public ::testing::Test {
 protected:
  TFirebirdFolder folder_;
};

TEST_F(InterbaseFileTest, EveryTypeOfColumn) {
  const auto engine = Engine(folder_.NewDatabase("shop.fdb", kShop));
  engine->Connect();
  EXPECT_EQ(DumpMeta(engine->meta()), "table EVERYTHING\ntable Lower case\ntable TRUTH\n")
      << "no views, no system tables";
  Fetch(*engine, "EVERYTHING");
  EXPECT_EQ(DumpMeta(engine->meta()), kEverything);
  EXPECT_EQ(MessageOf([&] { Fetch(*engine, "TRUTH"); }), "TDBConn.DecodeColumn: Unhandled column type BOOLEAN");
  Fetch(*engine, "Lower case");
  EXPECT_THAT(DumpMeta(engine->meta()), HasSubstr("column a b <I4>(0,0)\n"));
}

TEST_F(InterbaseFileTest, EveryTypeOfValue) {
  const auto engine = Engine(folder_.NewDatabase("v.fdb", kShop));
  engine->Connect();
  TTableGuard rows(*engine, "EVERYTHING");
  EXPECT_EQ(rows->RecordCount(), 2);
  EXPECT_EQ(RowText(*rows),
            "-32768|7|-9223372036854775808|0.5|-0.07|-99999999999999.9999|0.5|1E100|zwölf| in und |Straße|né|" +
                std::string("\0\xff \0", 4) + "|1899-12-29|1899-12-30 23:59:59|2024-02-29 12:00:00|" +
                std::string("\0\1\2", 3) + "|Größe||0.00|8|-");
  rows->Next();
  EXPECT_EQ(RowText(*rows), "1|7|-|-|-|-|-|-||-|-|-|-|-|-|-|-|-|x|0.00|8|-");
  rows->First();
  EXPECT_EQ(VarToInt(rows->FieldByName("c_short").value), -32768) << "rows are there until they are closed";
  const auto kind = [&rows](const char* name) { return std::string(FieldKindName(rows->FieldByName(name).def.kind)); };
  EXPECT_EQ(
      kind("C_NUM9") + "," + kind("C_OCTETS") + "," + kind("C_BLOB") + "," + kind("C_TEXT") + "," + kind("C_LIST"),
      "BCD,bytes,blob,memo,other");
  EXPECT_EQ(rows->FieldByName("C_NCHAR").def.size, 5);
  const auto truth = engine->OpenQuery("select true as YES, cast(null as boolean) as NOBODY from rdb$database");
  EXPECT_EQ(RowText(*truth), "True|-");
  const auto note =
      engine->OpenQuery("select cast('zwölf €' as blob sub_type text character set WIN1252) as NOTE from rdb$database");
  EXPECT_EQ(RowText(*note), "zwölf €") << "long texts are UTF-8 too, whatever they are in the database";
}

TEST_F(InterbaseFileTest, StatementsAndTheDefaultTransaction) {
  const auto engine = Engine(folder_.NewDatabase("s.fdb", {"create table T (A integer)"}));
  engine->Connect();
  EXPECT_EQ(engine->ExecSQL("insert into T values (1)"), 1);
  engine->StartTransaction();
  EXPECT_EQ(engine->ExecSQL("update T set A = A + 1 where A > 0"), 1);
  EXPECT_EQ(engine->ExecSQL("insert into T values (5)"), 1);
  EXPECT_EQ(engine->GetRecordCount("T"), 2) << "queries run in it too";
  EXPECT_EQ(MessageOf([&] { engine->StartTransaction(); }), "A transaction is already started");
  EXPECT_TRUE(engine->InTransaction());
  engine->Rollback();
  EXPECT_FALSE(engine->InTransaction());
  EXPECT_EQ(engine->GetRecordCount("T"), 1);
  engine->StartTransaction();
  engine->ExecSQL("insert into T values (6)");
  engine->Commit();
  engine->Commit();
  engine->StartTransaction();
  engine->ExecSQL("insert into T values (7)");
  engine->Reconnect();
  EXPECT_EQ(engine->GetRecordCount("T"), 2) << "a disconnect undoes what was not committed";
  const auto returned = engine->OpenQuery("insert into T values (9) returning A");
  EXPECT_EQ(RowText(*returned), "9");
  EXPECT_THAT(MessageOf([&] { engine->ExecSQL("insert into T values ('x')"); }), HasSubstr("conversion error"));
  EXPECT_THAT(MessageOf([&] { engine->OpenQuery("select B from T"); }), HasSubstr("Column unknown\n-B"));
  engine->ExecSQL("create view V as select A from T");
  EXPECT_THAT(MessageOf([&] { engine->ExecSQL("drop table T"); }), HasSubstr("there are 1 dependencies"))
      << "found out when it is committed";
  for (const char* statement : {"commit", "rollback", "set transaction"})
    EXPECT_THAT(MessageOf([&] { engine->ExecSQL(statement); }), HasSubstr("cannot be started or ended by a statement"));
  EXPECT_EQ(engine->GetRecordCount("T"), 3) << "and the connection is as good as before";
  for (const char* table : {"mon$transactions", "mon$statements"}) {
    const std::string left =
        std::string("select count(*) from ") + table + " where mon$attachment_id = current_connection";
    EXPECT_EQ(RowText(*engine->OpenQuery(left)), "1") << table << ": that of the question";
  }
}

TEST_F(InterbaseFileTest, ATableThatSomebodyReadsCanBeDropped) {
  const auto engine = Engine(folder_.NewDatabase("d.fdb", kShop));
  engine->Connect();
  Fetch(*engine, "EVERYTHING");
  TTableGuard rows(*engine, "EVERYTHING");
  const std::unique_ptr<TDBConn> other = engine->Clone();
  other->ExecSQL("drop view CHEAP");
  other->DropTable("EVERYTHING");
  rows->Next();
  EXPECT_EQ(VarToInt(rows->Value(0)), 1) << "the reader has its rows";
  engine->Connect();
  EXPECT_EQ(DumpMeta(engine->meta()), "table Lower case\ntable TRUTH\n");
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

// --- A server

TEST(InterbaseServerTest, ReadsAsAFileDoesAndRefusesStrangers) {
  TPrivateFirebird server;
  const std::string path = server.Folder().NewDatabase("shop.fdb", kShop);
  const auto engine = Engine(path, server.Server());
  engine->Connect();
  const std::unique_ptr<TDBConn> second = engine->Clone();
  Fetch(*engine, "EVERYTHING");
  Fetch(*second, "EVERYTHING");
  EXPECT_EQ(DumpMeta(engine->meta()), kEverything);
  EXPECT_EQ(DumpMeta(second->meta()), kEverything);
  TTableGuard rows(*engine, "EVERYTHING");
  EXPECT_THAT(RowText(*rows), HasSubstr("zwölf| in und |Straße|né|"));
  second->ExecSQL("drop view CHEAP");
  second->DropTable("EVERYTHING");
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

TEST(InterbaseServerTest, AServerThatNeverAnswersTheLogin) {
  TFirebirdFolder folder;
  testing::TLoopbackServer silent([](int connection) {
    char byte = 0;
    while (read(connection, &byte, 1) == 1) continue;
  });
  const auto client = Client("/x.fdb", "127.0.0.1/" + std::to_string(silent.Port()));
  client->ConnectTimeout = 1;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_THAT(MessageOf([&] { client->SetConnected(true); }), HasSubstr("rejected by remote interface"));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
}

// A listener whose queue is full behaves as a machine that is switched off does: nothing comes back.
class TFullListener {
 public:
  TFullListener() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* place = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof(address);
    EXPECT_EQ(bind(sockets_[0], place, size), 0);
    EXPECT_EQ(listen(sockets_[0], 0), 0);
    EXPECT_EQ(getsockname(sockets_[0], place, &size), 0);
    port_ = ntohs(address.sin_port);
    for (std::size_t i = 1; i < sockets_.size(); ++i) static_cast<void>(connect(sockets_[i], place, size));
  }
  ~TFullListener() {
    for (const int each : sockets_) close(each);
  }
  TFullListener(const TFullListener&) = delete;
  TFullListener& operator=(const TFullListener&) = delete;

  int Port() const { return port_; }

 private:
  static int NewSocket() { return socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0); }

  const std::array<int, 4> sockets_{NewSocket(), NewSocket(), NewSocket(), NewSocket()};
  int port_ = 0;
};

TEST(InterbaseServerTest, AHostThatTakesNoNotice) {
  TFirebirdFolder folder;
  const TFullListener silent;
  for (const std::string host : {"127.0.0.1", "[127.0.0.1]"}) {
    const std::string server = host + "/" + std::to_string(silent.Port());
    const auto client = Client("/x.fdb", server);
    client->ConnectTimeout = 1;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(MessageOf([&] { client->SetConnected(true); }),
              "The server " + server + " did not react within 1 seconds");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
    EXPECT_FALSE(client->GetConnected());
  }
}

}  // namespace
}  // namespace velmora
