// SPDX-License-Identifier: GPL-3.0-or-later

// The engine of SQL Server over the real ODBC driver, against a played server.

#include "core/Meta.h"
#include "engines/oledb/sqlserver/SqlServerRig.h"
#include "support/MetaDump.h"
#include "util/Files.h"

namespace velmora::testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class SqlServerDriverTest : public TSqlServerTest {};

TEST_F(SqlServerDriverTest, StructureAndLists) {
  TDBConnSQLServer conn = Conn();
  conn.Connect();
  TStringList tables, databases;
  conn.ListTables(tables);
  for (const std::string& table : tables) {
    conn.meta().GotoTable(table);
    conn.FetchIfNeeded();
  }
  EXPECT_EQ(DumpMeta(conn.meta()), ReadFileText(kSqlServerData + "shop.golden"));
  conn.ListDatabases(databases);
  EXPECT_THAT(databases, ElementsAre("master", "shop", "archive"));
}

// A line for each type: kind of field, value, and literal or why there is none.
TEST_F(SqlServerDriverTest, RowsOfAllTypes) {
  TDBConnSQLServer conn = Conn();
  conn.Connect();
  const auto rows = conn.OpenQuery("select * from [kinds]");
  std::string told;
  for (std::size_t i = 0; i < rows->Fields().size(); ++i) {
    const TFieldDef& field = rows->Fields()[i];
    const std::string value = VarToText(rows->Value(i));
    std::string literal;
    const std::string error = MessageOf([&] { conn.FieldValParam(rows->Field(i), literal); });
    told += field.name + " " + std::string(FieldKindName(field.kind)) + " |" +
            (literal.starts_with("0x") ? "" : value) + "| " + (literal.empty() ? error : literal) + "\n";
  }
  EXPECT_EQ(told, ReadFileText(kSqlServerData + "kinds.golden"));
  rows->Next();
  for (std::size_t i = 0; i < rows->Fields().size(); ++i) EXPECT_TRUE(VarIsNull(rows->Value(i))) << i;
}

TEST_F(SqlServerDriverTest, StatementsArriveAsTheyAreWritten) {
  TDBConnSQLServer conn = Conn();
  conn.Connect();
  server_.TakeReceived();
  conn.CreateTable("größe Ł", {"a int", "b nvarchar(3)"});
  EXPECT_EQ(conn.ExecSQL("insert into [wide] values (1), (2)"), 2);
  conn.StartTransaction();
  conn.RenameTable("customers", "p'q");
  conn.Commit();
  EXPECT_THAT(server_.TakeReceived(),
              ElementsAre("create table [größe Ł](\r\n\ta int,\r\n\tb nvarchar(3)\r\n\r\n)", HasSubstr("sp_tables"),
                          "insert into [wide] values (1), (2)", "(begin)", "exec sp_rename '[customers]','p'q'",
                          "(commit)", "(begin)", "(rollback)"))
      << "the last two are the driver's way out of transactions";
  conn.StartTransaction();
  conn.TruncateTable("orders");
  server_.TakeReceived();
  conn.Disconnect();
  EXPECT_THAT(server_.TakeReceived(), AllOf(Contains("(rollback)"), Not(Contains("(commit)"))));
}

TEST_F(SqlServerDriverTest, ErrorsOfStatementsPassAndTheConnectionStays) {
  TDBConnSQLServer conn = Conn();
  conn.Connect();
  EXPECT_THAT(MessageOf([&] { conn.ExecSQL("drop table [refused]"); }), HasSubstr("The statement conflicted with Ł."));
  EXPECT_THAT(MessageOf([&] { conn.OpenQuery("delete from [wide]"); }), HasSubstr("gives no rows"));
  EXPECT_EQ(conn.ExecSQL("insert into [wide] values (1), (2)"), 2);
}

}  // namespace
}  // namespace velmora::testing
