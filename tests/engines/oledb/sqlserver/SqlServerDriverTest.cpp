// The engine of SQL Server over the real ODBC driver, against a server of our own that runs its catalog queries.

#include "core/Meta.h"
#include "engines/oledb/sqlserver/SqlServerRig.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr int kVersions[] = {0x701, 0x702, 0x703, 0x704};  // of the protocol

class SqlServerDriverTest : public TSqlServerTest {};

constexpr char kOrders[] = R"(table customers
table orders fetched
column id <I4>(0,0) notnull autoinc
column customer <I4>(0,0) notnull
column region <I4>(0,0)
column number <NVARCHAR>(20,0)
column total <DECIMAL>(12,2) default=((0))
column rate <DOUBLE>(53,0)
column paid <BOOL>(0,0)
column note <NTEXT_mssql>(0,0) default=(N'it''s')
column stamp <TIMESTAMP_mssql>(0,0)
column placed <DATETIME>(0,0)
key PK_orders(number A) unique
key UQ_orders(customer A,placed D) unique
key by day(placed D) primary
key _WA_Sys_total(total A)
constraint DF_note(note)->() type=4 value=(N'it''s')
constraint DF_total(total)->() type=4 value=((0))
constraint CK_both()->() type=3
constraint FK_customer(customer,region)->customers(id,region)
constraint UQ_orders()->() type=1
constraint PK_orders()->() type=0
constraint CK_total(total)->() type=3
constraint FK_self(customer)->orders(id)
)";

std::vector<std::string> Names(const std::string& prefix) {
  std::vector<std::string> names;
  for (int i = 1; i <= 16; ++i) names.push_back(prefix + std::to_string(i));
  return names;
}

TEST_F(SqlServerDriverTest, StructureOfARichTable) {
  server_.Table("customers").Column("id", "int").Column("region", "int").Primary("PK_customers", {"id", "region"});
  server_.Table("orders")
      .Column("id", "int identity", "No")
      .Column("customer", "int", "No")
      .Column("region", "int", "NO")
      .Column("number", "nvarchar(20)")
      .Column("total", "decimal(12,2)")
      .Column("rate", "float")
      .Column("paid", "bit")
      .Column("note", "ntext")
      .Column("stamp", "timestamp")
      .Column("placed", "datetime")
      .Primary("PK_orders", {"number"}, false)
      .Unique("UQ_orders", {"customer", "placed desc"})
      .Index("by day", {"placed desc"}, {.clustered = true})
      .Index("_WA_Sys_total", {"total"})
      .Index("torders", {})
      .Default("DF_total", "total", "((0))")
      .Default("DF_note", "note", "(N'it''s')")
      .Check("CK_total", "([total]>=(0))", "total")
      .Check("CK_both", "([rate]>(0) OR [paid]=(1))")
      .Foreign("FK_customer", {"customer", "region"}, "customers", {"id", "region"})
      .Foreign("FK_self", {"customer"}, "orders", {"id"});
  for (const int version : kVersions) {
    SCOPED_TRACE(version);
    server_.newest = version;
    TDBConnSQLServer conn = Conn();
    conn.Connect();
    conn.meta().GotoTable("orders");
    conn.FetchIfNeeded();
    EXPECT_EQ(DumpMeta(conn.meta()), kOrders);
  }
}

TEST_F(SqlServerDriverTest, NamesAndSixteenColumns) {
  TTdsTable wide = server_.Table("wide"), far = server_.Table("far");
  for (const std::string& name : Names("c")) wide.Column(name, "int");
  for (const std::string& name : Names("p")) far.Column(name, "int");
  std::vector<std::string> keys = Names("c");
  keys[15] += " desc";
  wide.Primary("PK", keys).Foreign("FK", Names("c"), "far", Names("p"));
  server_.Table("O'Neil's Łódź 日本")
      .Column("it's \"quoted\"", "nvarchar(5)")
      .Default("DF'x", "it's \"quoted\"", "(N'😀 Ł')")
      .Primary("PK ö", {"it's \"quoted\""});
  TDBConnSQLServer conn = Conn();
  conn.Connect();
  for (const char* table : {"wide", "O'Neil's Łódź 日本"}) {
    conn.meta().GotoTable(table);
    conn.FetchIfNeeded();
  }
  std::string columns;
  for (const std::string& name : Names("c")) columns += "column " + name + " <I4>(0,0)\n";
  const std::string local = "c1,c2,c3,c4,c5,c6,c7,c8,c9,c10,c11,c12,c13,c14,c15,c16";
  EXPECT_EQ(DumpMeta(conn.meta()),
            "table far\n"
            "table O'Neil's Łódź 日本 fetched\n"
            "column it's \"quoted\" <NVARCHAR>(5,0) default=(N'😀 Ł')\n"
            "key PK ö(it's \"quoted\" A) primary unique\n"
            "constraint DF'x(it's \"quoted\")->() type=4 value=(N'😀 Ł')\n"
            "constraint PK ö()->() type=0\n"
            "table wide fetched\n" +
                columns + "key PK(" + StrReplace(local, ",", " A,") + " D) primary unique\nconstraint FK(" + local +
                ")->far(" + StrReplace(local, "c", "p") + ")\nconstraint PK()->() type=0\n");
}

TEST_F(SqlServerDriverTest, UnknownConstraintTypeLeavesTheTableUnfetched) {
  server_.Table("odd").Column("id", "int").Constraint("what", 6, "id", "");
  TDBConnSQLServer conn = Conn();
  conn.Connect();
  conn.meta().GotoTable("odd");
  EXPECT_EQ(MessageOf([&] { conn.FetchIfNeeded(); }), "Unknown constraint type");
  EXPECT_EQ(DumpMeta(conn.meta()), "table odd\ncolumn id <I4>(0,0)\nconstraint what()->() type=0\n");
}

TEST_F(SqlServerDriverTest, Lists) {
  server_.Table("b").Column("id", "int");
  server_.Table("a").Column("id", "int");
  TTdsTable(server_.Catalog(), "v", "V");
  TTdsTable(server_.Catalog(), "sysusers", "S");
  TDBConnSQLServer conn = Conn();
  TStringList list = {"old"};
  conn.ListDatabases(list);
  EXPECT_THAT(list, ElementsAre("master", "shop", "archive"));
  conn.ListTables(list);
  EXPECT_THAT(list, ElementsAre("a", "b"));
}

TEST_F(SqlServerDriverTest, RowsOfAllTypes) {
  const struct {
    const char* type;
    std::string value;
    const char* shown;    // null: as the value
    const char* literal;  // as FieldValParam gives it
  } kCases[] = {
      {"tinyint", "200", nullptr, "200"},
      {"smallint", "-32768", nullptr, "-32768"},
      {"int", "2147483647", nullptr, "2147483647"},
      {"bigint", "-9223372036854775808", nullptr, "-9223372036854775808"},
      {"bit", "1", "True", "1"},
      {"real", "0.25", nullptr, "0.25"},
      {"float", "-1.5E300", nullptr, "-1.5E300"},
      {"decimal(38,4)", "-12345678901234567890123456789012.3456", nullptr, nullptr},
      {"numeric(9,0)", "999999999", nullptr, "999999999"},
      {"money", "-922337203685477.5808", nullptr, nullptr},
      {"smallmoney", "0.0100", nullptr, "0.01"},
      {"datetime", "2001-02-03 04:05:06", nullptr, "'20010203 04:05:06'"},
      {"datetime", "1753-01-01", nullptr, "'17530101'"},
      {"smalldatetime", "2079-06-06 23:59:00", nullptr, "'20790606 23:59:00'"},
      {"uniqueidentifier", "6F9619FF-8B86-D011-B42D-00CF4FC964FF", nullptr, nullptr},
      {"char(3)", "ab ", nullptr, "'ab '"},
      {"varchar(10)", "zwölf", nullptr, nullptr},
      {"nchar(2)", "日 ", nullptr, nullptr},
      {"nvarchar(20)", "it's Ł😀", nullptr, nullptr},
      {"nvarchar(20)", "", nullptr, "''"},
      {"text", "é", nullptr, nullptr},
      {"ntext", "Ł", nullptr, nullptr},
      {"varchar(max)", std::string(100000, 'v'), nullptr, nullptr},
      {"nvarchar(max)", "Ł", nullptr, nullptr},
      {"binary(2)", std::string("\0\xFF", 2), nullptr, "0x00FF"},
      {"varbinary(8)", "a", nullptr, "0x61"},
      {"varbinary(max)", std::string(70000, '\0'), nullptr, nullptr},
      {"image", "\xFE", nullptr, "0xFE"},
  };
  TTdsTable table = server_.Table("kinds");
  std::vector<TTdsValue> values;
  for (const auto& c : kCases) {
    table.Column("c" + std::to_string(values.size()), c.type);
    values.emplace_back(c.value);
  }
  table.Row(values).Row(std::vector<TTdsValue>(values.size()));
  for (const int version : kVersions) {
    server_.newest = version;
    TDBConnSQLServer conn = Conn();
    conn.Connect();
    const auto rows = conn.OpenQuery("select * from [kinds]");
    for (std::size_t i = 0; i < values.size(); ++i) {
      SCOPED_TRACE(std::string(kCases[i].type) + " " + std::to_string(version));
      EXPECT_EQ(VarToText(rows->Value(i)), kCases[i].shown ? kCases[i].shown : kCases[i].value)
          << FieldKindName(rows->Fields()[i].kind);
      if (kCases[i].literal == nullptr) continue;
      std::string literal;
      conn.FieldValParam(rows->Field(i), literal);
      EXPECT_EQ(literal, kCases[i].literal);
    }
    rows->Next();
    for (std::size_t i = 0; i < values.size(); ++i) EXPECT_TRUE(VarIsNull(rows->Value(i))) << kCases[i].type;
  }
}

TEST_F(SqlServerDriverTest, Chunks) {
  server_.Table("t")
      .Column("id", "int")
      .Column("name", "nvarchar(9)")
      .Primary("PK", {"id"})
      .Row({"1", "a"})
      .Row({"2", "b"})
      .Row({"3", "c"});
  server_.Table("heap").Column("id", "int").Primary("PK", {"id"}, false);
  server_.Table("pair").Column("a", "int").Column("b", "int").Primary("PK", {"a", "b"});
  TDBConnSQLServer conn = Conn();
  conn.Connect();
  EXPECT_TRUE(conn.SupportsChunks("t"));
  EXPECT_FALSE(conn.SupportsChunks("heap"));
  EXPECT_FALSE(conn.SupportsChunks("pair"));
  EXPECT_EQ(RowsText(*conn.OpenTableDataChunk("t", 1, 2)), "1|a\n2|b\n");
  EXPECT_EQ(RowsText(*conn.OpenTableDataChunk("t", 3, 2)), "3|c\n");
  EXPECT_EQ(Statements().back(), "select top 2 * from [t] where id not in (select top 2 id from [t])");
  EXPECT_EQ(MessageOf([&] { conn.OpenTableDataChunk("heap", 1, 1); }), "Table heap can not be opened in chunks!");
}

TEST_F(SqlServerDriverTest, StatementsArriveAsTheyAreWritten) {
  server_.Table("oł").Column("id", "int identity", "No").Column("x", "int");
  server_.Table("a").Column("id", "int");
  TDBConnSQLServer conn = Conn();
  conn.Connect();
  conn.CreateTable("neu", {"a int", "b nvarchar(3)"});
  conn.AddColumn("oł", "c int not null auto_increment first");
  conn.ModifyColumn("oł", "x", "x", "bigint default '5'");
  conn.RenameColumn("oł", "x", "größe");
  conn.TruncateTable("oł");
  conn.DropTable("oł");
  conn.RenameTable("a", "p'q");
  EXPECT_THAT(Statements(),
              ElementsAre("create table [neu](\r\n\ta int,\r\n\tb nvarchar(3)\r\n\r\n)",
                          "alter table [oł] add c int not null identity", "alter table [oł] ALTER COLUMN [x] bigint ",
                          "exec sp_rename '[oł].[x]','größe','COLUMN'", "truncate table [oł]", "drop table [oł]",
                          "exec sp_rename '[a]','p'q'"));
}

TEST_F(SqlServerDriverTest, LoadingAnIdentityColumn) {
  server_.Table("t").Column("id", "int identity", "No");
  TDBConnSQLServer conn = Conn();
  conn.Connect();
  conn.BeforeDataLoad("t");
  EXPECT_EQ(conn.ExecSQL("insert into [t] values (7), (8)"), 2);
  conn.AfterDataLoad("t");
  EXPECT_EQ(Statements().back(), "set identity_insert [t] off");
  EXPECT_EQ(RowsText(*conn.OpenTable("t")), "7\n8\n");
}

TEST_F(SqlServerDriverTest, Transactions) {
  server_.Table("t").Column("id", "int");
  for (const int version : {0x701, 0x704}) {
    SCOPED_TRACE(version);
    server_.newest = version;
    TDBConnSQLServer writer = Conn(), reader = Conn();
    writer.Connect();
    reader.Connect();
    writer.ExecSQL("delete from t");
    writer.StartTransaction();
    EXPECT_EQ(writer.ExecSQL("insert into t values (1)"), 1);
    EXPECT_EQ(reader.GetRecordCount("t"), 0);
    writer.Commit();
    EXPECT_EQ(reader.GetRecordCount("t"), 1);
    EXPECT_EQ(MessageOf([&] { writer.Rollback(); }), "NOT IMPLEMENTED");
    writer.StartTransaction();
    writer.ExecSQL("insert into t values (2)");
    writer.Disconnect();
    EXPECT_EQ(reader.GetRecordCount("t"), 1) << "what was not committed is gone with the connection";
  }
}

TEST_F(SqlServerDriverTest, ErrorsOfStatementsPassAndTheConnectionStays) {
  server_.Table("t").Column("id", "int").Row({"5"});
  server_.refused = "refuse";
  server_.refusal = {547, 16, "The statement conflicted with Ł."};
  TDBConnSQLServer conn = Conn();
  conn.Connect();
  EXPECT_THAT(MessageOf([&] { conn.ExecSQL("drop table refuse"); }), HasSubstr("The statement conflicted with Ł."));
  EXPECT_THAT(MessageOf([&] { conn.OpenQuery("select * from nowhere"); }), HasSubstr("Invalid object name 'nowhere'."));
  EXPECT_THAT(MessageOf([&] { conn.OpenQuery("delete from t where id = 1"); }), HasSubstr("gives no rows"));
  EXPECT_EQ(RowsText(*conn.OpenTable("t")), "5\n");
}

}  // namespace
}  // namespace velmora::testing
