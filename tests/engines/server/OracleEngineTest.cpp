#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "core/Meta.h"
#include "engines/server/ClientOracle.h"
#include "engines/server/DBConnOracle.h"
#include "support/FakeOracle.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/OracleDictionary.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using ::testing::ElementsAre;
using testing::FakeOracleOf;
using testing::MessageOf;
using testing::TFakeOracle;
using testing::TOracleDictionary;

constexpr char kHome[] = VELMORA_FAKE_CLIENTS "/oracle";
constexpr char kNoPrimaryIndex[] = "Oracle primary key constraint can not locate corresponding index!";
constexpr char kNoUniqueIndex[] = "Oracle unique key constraint can not locate corresponding index!";

class DBConnOracle : public ::testing::Test {
 protected:
  DBConnOracle() { unsetenv("ORACLE_HOME"); }
  ~DBConnOracle() override {
    engine.reset();
    EXPECT_EQ(server.given_out, 0);
    EXPECT_THAT(server.faults, ElementsAre());
  }

  static std::unique_ptr<TDBConnOracle> NewEngine(const std::string& authmode = "Normal", bool direct = false) {
    return std::make_unique<TDBConnOracle>(std::make_unique<TOraLibrarySession>(kHome), "ORCL", "scott", "tiger",
                                           authmode, direct);
  }
  void Connect(const std::vector<std::string>& tables = {"T"}) {
    TOracleDictionary(server).Tables(tables);
    engine->Connect();
    server.TakeLog();
  }
  std::string Fetch(const std::string& table = "T") {
    return MessageOf([&] {
      engine->meta().GotoTable(table);
      engine->FetchIfNeeded();
    });
  }

  TFakeOracle& server = FakeOracleOf(kHome);
  std::unique_ptr<TDBConnOracle> engine = NewEngine();
};

TEST_F(DBConnOracle, ReadsATable) {
  TOracleDictionary(server)
      .Column("T", {"ID", "NUMBER", "0", "22", "10", "0", "N"})
      .Column("T", {"PRICE", "NUMBER", {}, "22", "9", "-2", "Y"})
      .Column("T", {"ANY", "NUMBER", {}, "22", {}, {}, "Y"})
      .Column("T", {"F", "FLOAT", {}, "22", "126", {}, "Y"})
      .Column("T", {"NAME", "VARCHAR2", "30", "120", {}, {}, "N"})
      .Column("T", {"SIGN", "NCHAR", "5", "10", {}, {}, "Y"})
      .Column("T", {"DAY", "DATE", {}, "7", {}, {}, "Y"})
      .Column("T", {"IMAGE", "LONG RAW", {}, "0", {}, {}, "Y"})
      .Column("T", {"HASH", "RAW", {}, "16", {}, {}, "Y"})
      .Index("T", {"PK", "UNIQUE", "ID", "ASC"})
      .Index("T", {"PK", "UNIQUE", "NAME", "DESC"})
      .Index("T", {"U", "NONUNIQUE", "NAME", "ASC"})
      .Index("T", {"X", "NONUNIQUE", "DAY", "ASC"})
      .Constraint("T", {"C", "C", "PRICE > 0", "PRICE", {}, {}})
      .Constraint("T", {"FK", "R", {}, "ID", "P", "P_ID"})
      .Constraint("T", {"FK", "R", {}, "NAME", "P", "P_NAME"})
      .Constraint("T", {"PK_T", "P", {}, "ID", {}, {}})
      .Constraint("T", {"PK_T", "P", {}, "NAME", {}, {}})
      .Constraint("T", {"U", "U", {}, "NAME", {}, {}});
  Connect();
  EXPECT_EQ(Fetch(), "nothing raised");
  EXPECT_EQ(DumpMeta(engine->meta()), R"(table T fetched
column ID <DECIMAL>(10,0) notnull
column PRICE <DECIMAL>(9,2)
column ANY <DECIMAL>(0,0)
column F <FLOAT>(126,0)
column NAME <VARCHAR>(30,0) notnull
column SIGN <NCHAR>(5,0)
column DAY <DATE>(0,0)
column IMAGE <BYTES>(0,0)
column HASH <BYTES>(16,0)
key PK(ID A,NAME D) primary unique
key U(NAME A) unique
key X(DAY A)
constraint C(PRICE)->() type=3 check=PRICE > 0
constraint FK(ID,NAME)->P(P_ID,P_NAME)
constraint PK_T(NAME)->() type=0
constraint U(NAME)->() type=1
)");
}

TEST_F(DBConnOracle, APrimaryKeyMayBeTheLastConstraint) {
  TOracleDictionary(server)
      .Column("T", {"A", "NUMBER"})
      .Index("T", {"I", "UNIQUE", "A", "ASC"})
      .Constraint("T", {"PK", "P", {}, "A", {}, {}});
  Connect();
  EXPECT_EQ(Fetch(), "nothing raised");
  EXPECT_EQ(engine->meta().tConstraints.TotalCount(), 1U);
  EXPECT_EQ(engine->meta().tConstraintFields.TotalCount(), 1U);
}

TEST_F(DBConnOracle, RefusesWhatItCannotRead) {
  const struct {
    const char* what;
    void (*fill)(TOracleDictionary& dictionary);
    const char* message;
  } kCases[] = {
      {"type",
       [](TOracleDictionary& d) {
         d.Column("T", {"A", "TIMESTAMP(6)", {}, "11", {}, "6", "Y"});
       },
       "TDBConn.DecodeColumn: Unhandled column type TIMESTAMP(6)"},
      {"primary key without an index",
       [](TOracleDictionary& d) {
         d.Constraint("T", {"PK", "P", {}, "A", {}, {}});
       },
       kNoPrimaryIndex},
      {"in another order",
       [](TOracleDictionary& d) {
         d.Index("T", {"I", "UNIQUE", "B", "ASC"}).Index("T", {"I", "UNIQUE", "A", "ASC"});
         d.Constraint("T", {"PK", "P", {}, "A", {}, {}}).Constraint("T", {"PK", "P", {}, "B", {}, {}});
       },
       kNoPrimaryIndex},
      {"on an index that is not unique",
       [](TOracleDictionary& d) {
         d.Index("T", {"I", "NONUNIQUE", "A", "ASC"}).Constraint("T", {"I", "P", {}, "A", {}, {}});
       },
       kNoPrimaryIndex},
      {"unique constraint on an index of another name",
       [](TOracleDictionary& d) {
         d.Index("T", {"I", "UNIQUE", "A", "ASC"}).Constraint("T", {"i", "U", {}, "A", {}, {}});
       },
       kNoUniqueIndex},
      {"letter",
       [](TOracleDictionary& d) {
         d.Constraint("T", {"V", "V", {}, "A", {}, {}});
       },
       "Unhandled constraint type: V"},
      {"server gone",
       [](TOracleDictionary& d) {
         d.Column("T", {"A", "NUMBER"}).Column("T", {"B", "NUMBER"}).Lost("T", 1);
       },
       "ORA-03113: end-of-file on communication channel"},
  };
  for (const auto& c : kCases) {
    engine = NewEngine();
    server = {};
    TOracleDictionary dictionary(server);
    Connect();
    c.fill(dictionary);
    EXPECT_EQ(Fetch(), c.message) << c.what;
  }
}

TEST_F(DBConnOracle, ListsTablesByTheFirstColumn) {
  TOracleDictionary(server).Tables({"B", "A b"});
  engine->Connect();
  TStringList names{"old"};
  engine->meta().TableNames(names);
  EXPECT_THAT(names, ElementsAre("B", "A b"));
  engine->ListDatabases(names);
  EXPECT_THAT(names, ElementsAre());
  EXPECT_EQ(Fetch("B"), "nothing raised");
  EXPECT_EQ(MessageOf([&] { engine->GetRecordCount("B"); }), "ORA-00942: table or view does not exist");
  server.Add("select count(*) from \"B\"", {"COUNT(*)"}, {{"7"}});
  EXPECT_EQ(engine->GetRecordCount("B"), 7);
  TVariant value;
  EXPECT_EQ(MessageOf([&] { engine->GetResultSQL("select * from user_tables order by 1", value); }),
            "Oracle.GetResultSQL: exactly one record expected");
}

TEST_F(DBConnOracle, HandsItsParametersToTheSession) {
  const struct {
    const char* authmode;
    bool direct;
    int mode;
    const char* message;
  } kCases[] = {
      {"Normal", false, 0, "nothing raised"},
      {"", true, 0, "nothing raised"},
      {"SYSDBA", false, 2, "nothing raised"},
      {"SYSOPER", false, 1, "nothing raised"},
      {"sysdba", false, 0, "Invalid Oracle authentication mode!"},
  };
  for (const auto& c : kCases) {
    engine = NewEngine(c.authmode, c.direct);
    EXPECT_EQ(MessageOf([&] { engine->ApplyParams(); }), c.message) << c.authmode;
    const TOraSession& session = engine->GetConnectionObject();
    EXPECT_EQ(session.ConnectMode, c.mode) << c.authmode;
    EXPECT_EQ(session.Options.Net, c.direct) << c.authmode;
    EXPECT_EQ(session.Server + session.Username + session.Password, "ORCLscotttiger");
    TXMLAccess store;
    engine->SaveParams("/root/x", store);
    EXPECT_EQ(store.xmlGetVal("/root/x/authmode") + store.xmlGetVal("/root/x/direct"),
              std::string(c.authmode) + (c.direct ? "Y" : "N"));
  }
}

TMetaColumn Column(TNeutralType type, std::int64_t size, std::int32_t precision = 0) {
  TMetaColumn column;
  column.datatype = type;
  column.size = size;
  column.precision = precision;
  return column;
}

TEST_F(DBConnOracle, WritesColumns) {
  const struct {
    TMetaColumn column;
    const char* text;
  } kCases[] = {
      {Column(ntDecimal, 10, 2), "NUMBER(10,2)"},
      {Column(ntDecimal, 0), "NUMBER"},
      {Column(ntI4, 11), "NUMBER(11,0)"},
      {Column(ntFloat, 126), "FLOAT(126)"},
      {Column(ntVarChar, 30), "VARCHAR2(30)"},
      {Column(ntNChar, 5), "NCHAR2(5)"},
      {Column(ntDateTime, 0), "DATE"},
      {Column(ntTime, 8), "DATE"},
      {Column(ntBytes, 16), "LONG"},
      {Column(ntText, 16), "LONG(16)"},
  };
  for (const auto& c : kCases) {
    std::string text;
    engine->ColumnDescription(c.column, true, text);
    EXPECT_EQ(text, c.text);
  }
  TMetaColumn full = Column(ntBytes, 16);
  full.notnull = true;
  full.default_ = "x";
  full.autoinc = true;
  std::string text;
  engine->ColumnDescription(full, true, text);
  EXPECT_EQ(text, "LONG not null default \"x\"");
  engine->no_defaults = true;
  engine->ColumnDescription(full, true, text);
  EXPECT_EQ(text, "LONG not null");
  engine->ColumnDescription(full, false, text);
  EXPECT_EQ(text, "LONG");
  EXPECT_EQ(MessageOf([&] { engine->ColumnDescription(Column(ntYearMySql, 4), true, text); }),
            "TDBConn.ColumnDescription: Unhandled column type 23 for column /");
}

TEST_F(DBConnOracle, GivesTexts) {
  const struct {
    const char* what;
    void (*call)(TDBConnOracle& engine, std::string& text);
    const char* text;
  } kTexts[] = {
      {"date", [](TDBConnOracle& e, std::string& t) { e.DateTimeLiteral(EncodeDate(2001, 2, 3), t); },
       "TO_DATE('20010203','YYYY MM DD')"},
      {"date and time",
       [](TDBConnOracle& e, std::string& t) { e.DateTimeLiteral(EncodeDate(2001, 2, 3) + EncodeTime(14, 5, 6), t); },
       "TO_DATE('20010203 14:05:06','YYYY MM DD HH24:MI:SS')"},
      {"auto-increment", [](TDBConnOracle& e, std::string& t) { e.AutoIncKeyword(t); }, "identity"},
      {"name", [](TDBConnOracle& e, std::string& t) { t = e.QuoteName("a b"); }, "\"a b\""},
      {"normal name", [](TDBConnOracle& e, std::string& t) { e.NormalizeName("a b.c d", t); }, "a_b.c_d"},
      {"display name", [](TDBConnOracle& e, std::string& t) { e.GetDisplayName(t); }, "scott@ORCL"},
      {"primary key",
       [](TDBConnOracle& e, std::string& t) {
         e.KeyDescription({.table = "my table", .name = "k", .primary = true, .unique = true, .columns = "a;b"}, true,
                          t);
       },
       "constraint pk_my_table primary key (a,b)"},
      {"key's name",
       [](TDBConnOracle& e, std::string& t) {
         e.KeyDescription({.table = "t", .name = "k", .primary = true, .columns = "a"}, false, t);
       },
       "k"},
      {"unique key",
       [](TDBConnOracle& e, std::string& t) {
         e.KeyDescription({.table = "t", .name = "k", .unique = true, .columns = "a"}, true, t);
       },
       "unique key \"k\" (a)"},
      {"surrogate key", [](TDBConnOracle& e, std::string& t) { e.SurrogateKeyColumn("id", t); }, "as it was"},
      {"no constraint texts",
       [](TDBConnOracle& e, std::string& t) { t = MessageOf([&] { e.ConstraintDescription({}, true, t); }); },
       "Abstract error"},
  };
  const std::string abstract = MessageOf([] { RaiseAbstract(); });
  for (const auto& c : kTexts) {
    std::string text = "as it was";
    c.call(*engine, text);
    EXPECT_EQ(text == abstract ? "Abstract error" : text, c.text) << c.what;
  }
  EXPECT_TRUE(engine->SupportsChunks("t"));
}

TEST_F(DBConnOracle, SendsStatements) {
  server.answers["update"].affected = 4;
  server.answers["bad"].error = {900, "ORA-00900: invalid SQL statement\n"};
  Connect({"T", "BIN$x", "bin$y"});
  std::string seen;
  engine->on_exec_sql = [&](const std::string& sql) { seen += sql + "|"; };
  EXPECT_EQ(engine->ExecSQL("update"), 4);
  EXPECT_EQ(engine->ExecSQL("update;"), 0);
  EXPECT_EQ(MessageOf([&] { engine->ExecSQL("a;bad;c"); }), "ORA-00900: invalid SQL statement");
  EXPECT_EQ(MessageOf([&] { engine->ExecSQL("bad"); }), "ORA-00900: invalid SQL statement");
  EXPECT_EQ(seen, "update|update;|a;bad;c|bad|");
  EXPECT_THAT(server.TakeLog(),
              ElementsAre("run update", "commit", "run update", "commit", "run a", "commit", "run bad", "run bad"));
  engine->StartTransaction();
  EXPECT_TRUE(engine->InTransaction());
  engine->ExecSQL("update");
  engine->Rollback();
  engine->StartTransaction();
  engine->Commit();
  EXPECT_FALSE(engine->InTransaction());
  EXPECT_THAT(server.TakeLog(), ElementsAre("run update", "rollback", "commit"));

  engine->DropTable("bin$y");
  EXPECT_THAT(server.TakeLog(), ElementsAre("run drop table \"bin$y\"", "commit"));
  EXPECT_EQ(MessageOf([&] { engine->CreateTable("n", {}); }), "To be created, table must have at least one column!");
  engine->CreateTable("n", {"\"a\" NUMBER", "primary key (a)"});
  engine->DropTable("BIN$x");
  engine->DropTable("T");
  EXPECT_THAT(server.TakeLog(), ElementsAre("run create table \"n\"(\r\n\t\"a\" NUMBER,\r\n\tprimary key (a)\r\n\r\n)",
                                            "commit", "run select * from user_tables order by 1",
                                            "run purge table \"BIN$x\"", "commit", "run drop table \"T\"", "commit"));
}

TEST_F(DBConnOracle, ReadsPartsOfATable) {
  TOracleDictionary(server).Column("T", {"A", "NUMBER"}).Column("T", {"B", "DATE"});
  server.Add(
      "select \"A\",\"B\" from (select rownum as tmpzqrownum,\"T\".* from \"T\" order by 1) zqtmptbl where "
      "zqtmptbl.tmpzqrownum between 11 and 15",
      {"A", "B"}, {{"1", "2"}});
  Connect();
  std::unique_ptr<TDataset> rows = engine->OpenTableDataChunk("T", 11, 5);
  EXPECT_EQ(rows->RecordCount(), 1);
  engine->CloseTable(std::move(rows));
}

TEST_F(DBConnOracle, ACloneHasTheStoreOrAConnection) {
  TOracleDictionary(server).Column("T", {"A", "NUMBER"});
  Connect();
  EXPECT_EQ(Fetch(), "nothing raised");
  const std::unique_ptr<TDBConn> connected = engine->Clone();
  EXPECT_TRUE(connected->GetConnected());
  EXPECT_EQ(DumpMeta(connected->meta()), "table T\n");
  engine->GetConnectionObject().SetConnected(false);
  const std::unique_ptr<TDBConn> copy = engine->Clone();
  EXPECT_FALSE(copy->GetConnected());
  EXPECT_EQ(DumpMeta(copy->meta()), "table T fetched\ncolumn A <DECIMAL>(0,0)\n");
  engine->Reconnect();
  EXPECT_EQ(DumpMeta(engine->meta()), "table T\n");
}

}  // namespace
}  // namespace velmora
