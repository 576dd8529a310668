// The engine over a client fed from tables: what its rows become and what it sends.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/Meta.h"
#include "engines/server/DBConnInterbase.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "util/Errors.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::MessageOf;
using namespace std::string_literals;

// What the client was asked and what it answers; it outlives every connection of a test.
struct TBackend {
  std::vector<std::string> log;
  TStringList tables;
  std::vector<TMemDataset::TRow> columns;
};

const TVariant kNull;
TVariant N(std::int64_t number) { return number; }

// One row of the column query; what the engine does not read is null.
TMemDataset::TRow Column(const std::string& name, const std::string& word, TVariant precision, TVariant length,
                         std::int64_t scale = 0, TVariant characters = {}, TVariant null_flag = {}) {
  return {name,  precision, kNull, kNull,      word,  null_flag, kNull, length,
          scale, kNull,     kNull, characters, kNull, kNull,     kNull};
}

class TFakeDatabase final : public TIBODatabase {
 public:
  explicit TFakeDatabase(TBackend& backend) : backend_(backend) {}

  bool GetConnected() const override { return connected_; }
  bool InTransaction() const override { return in_transaction_; }
  void StartTransaction() override { in_transaction_ = true; }
  void Commit() override { in_transaction_ = false; }
  void Rollback() override { in_transaction_ = false; }
  std::unique_ptr<TMemDataset> Read(const std::string& sql) override {
    backend_.log.push_back(sql);
    return sql.find("rdb$relations") != std::string::npos ? Tables() : Columns();
  }
  std::int64_t Execute(const std::string& sql) override {
    backend_.log.push_back(sql);
    return 3;
  }
  std::unique_ptr<TIBODatabase> NewDatabase() const override { return std::make_unique<TFakeDatabase>(backend_); }

 private:
  std::unique_ptr<TMemDataset> Tables() const {
    auto rows = std::make_unique<TMemDataset>(std::vector<TFieldDef>{{"RDB$RELATION_NAME"}});
    for (const std::string& table : backend_.tables) rows->AddRow({table});
    return rows;
  }
  std::unique_ptr<TMemDataset> Columns() const {
    std::vector<TFieldDef> fields;
    for (const char* name : {"FIELD_NAME", "FIELD_PRECISION", "FIELD_TYPE", "FIELD_SUB_TYPE", "TYPE_NAME", "NULL_FLAG",
                             "DEFAULT_VALUE", "FIELD_LENGTH", "FIELD_SCALE", "FIELD_SUB_TYPE", "DESCRIPTION",
                             "CHARACTER_LENGTH", "DEFAULT_SOURCE", "DEFAULT_SOURCE_DOMAIN", "COMPUTED_SOURCE"})
      fields.push_back({"RDB$"s + name});
    auto rows = std::make_unique<TMemDataset>(fields);
    for (const TMemDataset::TRow& row : backend_.columns) rows->AddRow(row);
    return rows;
  }
  void DoConnect() override {
    backend_.log.push_back("connect " + Param("SERVER") + " " + DatabaseName + " " + Param("USER NAME") + " " +
                           Password);
    connected_ = true;
  }
  void DoDisconnect() override { connected_ = false; }

  TBackend& backend_;
  bool connected_ = false;
  bool in_transaction_ = false;
};

class InterbaseEngineTest : public ::testing::Test {
 protected:
  TBackend backend_{{}, {"T", "U"}, {}};
  TDBConnInterbase engine_{std::make_unique<TFakeDatabase>(backend_), "srv", "/d/x.fdb", "joe", "secret"};
};

TEST_F(InterbaseEngineTest, HandsItsParametersOverWheneverItConnects) {
  engine_.Connect();
  engine_.Reconnect();
  EXPECT_EQ(backend_.log[0], "connect srv /d/x.fdb joe secret");
  EXPECT_EQ(backend_.log[2], backend_.log[0]);
  EXPECT_EQ(DumpMeta(engine_.meta()), "table T\ntable U\n");
  backend_.tables = {"ONLY"};
  engine_.Connect();
  EXPECT_EQ(DumpMeta(engine_.meta()), "table ONLY\n") << "connected already: the tables are listed anew";
  engine_.Disconnect();
  EXPECT_EQ(DumpMeta(engine_.meta()), "");
  EXPECT_FALSE(engine_.GetConnected());
}

TEST_F(InterbaseEngineTest, RowsOfTheSystemTables) {
  const struct {
    TMemDataset::TRow row;
    const char* expected;
  } kCases[] = {
      {Column("A", "SHORT", N(0), N(2), 0, {}, N(1)), "<I2>(0,0) notnull"},
      {Column("A", "LONG", N(0), N(4), 0, {}, N(0)), "<I4>(0,0) notnull"},  // whatever the flag holds
      {Column("A", "INT64", N(0), N(8)), "<I8>(0,0)"},
      {Column("A", "LONG", N(9), N(4), -2), "<DECIMAL>(9,2)"},
      {Column("A", "INT64", N(18), N(8), -4), "<DECIMAL>(18,4)"},
      {Column("A", "DOUBLE", N(15), N(8), -2), "<DECIMAL>(15,2)"},
      {Column("A", "FLOAT", kNull, N(4)), "<FLOAT>(8,0)"},
      {Column("A", "DOUBLE", kNull, N(8)), "<DECIMAL>(12,0)"},
      {Column("A", "TEXT", kNull, N(40), 0, N(10)), "<CHAR>(10,0)"},
      {Column("A", "TEXT", kNull, N(40), 0, N(0)), "<CHAR>(40,0)"},
      {Column("A", "VARYING", kNull, N(80), 0, N(20)), "<VARCHAR>(20,0)"},
      {Column("A", "VARYING", kNull, N(32765)), "<VARCHAR>(32765,0)"},
      {Column("A", "BLOB", kNull, N(8)), "<BYTES>(8,0)"},
      {Column("A", "DATE", kNull, N(4)), "<DATE>(0,0)"},
      {Column("A", "TIMESTAMP", kNull, N(8)), "<DATE>(0,0)"},
      {Column("A", "TIME", kNull, N(4)), "<TIME>(0,0)"},
  };
  engine_.Connect();
  for (const auto& test : kCases) {
    backend_.columns = {test.row};
    engine_.meta().InvalidateTable("T");
    engine_.meta().GotoTable("T");
    engine_.FetchIfNeeded();
    EXPECT_EQ(DumpMeta(engine_.meta()), "table T fetched\ncolumn A "s + test.expected + "\ntable U\n");
  }
  EXPECT_THAT(backend_.log.back(), HasSubstr("WHERE a.RDB$RELATION_NAME = 'T' ORDER BY"));
}

TEST_F(InterbaseEngineTest, AWordOutsideTheTypeTableFailsTheWholeTable) {
  engine_.Connect();
  for (const char* word : {"BOOLEAN", "QUAD", "CSTRING", "BLOB_ID", ""}) {
    backend_.columns = {Column("B", word, kNull, N(1))};
    engine_.meta().GotoTable("U");
    EXPECT_EQ(MessageOf([&] { engine_.FetchIfNeeded(); }), "TDBConn.DecodeColumn: Unhandled column type "s + word);
  }
  EXPECT_EQ(DumpMeta(engine_.meta()), "table T\ntable U\n");
}

TEST_F(InterbaseEngineTest, ColumnTexts) {
  const auto text = [this](TNeutralType type, std::int64_t size, const std::string& word, bool detailed) {
    const TMetaColumn column{"T", "A", type, word, size, type == ntDecimal ? 2 : 0, true, "'x'", false};
    std::string result;
    engine_.ColumnDescription(column, detailed, result);
    return result;
  };
  EXPECT_EQ(text(ntChar, 10, "TEXT", true), "TEXT(10) not null") << "never with a default";
  EXPECT_EQ(text(ntChar, 10, "TEXT", false), "TEXT");
  EXPECT_EQ(text(ntDecimal, 9, "DECIMAL", true), "DECIMAL(9,2) not null");
  EXPECT_EQ(text(ntFloat, 8, "FLOAT", true), "FLOAT(8,0) not null");
  EXPECT_EQ(text(ntI4, 0, "LONG", true), "LONG not null");
  EXPECT_EQ(text(ntVarChar, 7, "varchar", true), "varchar(7) not null") << "the word of another dialect stays";
  EXPECT_EQ(text(ntVarChar, 7, "", true), "VARYING(7) not null") << "a record straight from the store";
  const TMetaColumn counting{"T", "A", ntI4, "LONG", 0, 0, false, "", true};
  std::string result;
  engine_.ColumnDescription(counting, true, result);
  EXPECT_EQ(result, "LONG auto_increment");
  TMetaColumn parsed{"T", "A", ntI8, "INT64", 5, 0, false, "", false};
  engine_.ParseColumnDescription("TEXT(10) not null", parsed);
  EXPECT_TRUE(parsed.datatype == ntI8 && parsed.size == 5 && !parsed.notnull) << "nothing is parsed";
}

TEST_F(InterbaseEngineTest, AliasesIncludeTheMisspeltOnes) {
  const std::pair<const char*, TNeutralType> kWords[] = {{"CHAR", ntChar},
                                                         {"TEXT", ntChar},
                                                         {"national chararacter", ntNChar},
                                                         {"NCHAR VARYING", ntNVarChar},
                                                         {"char varying", ntVarChar},
                                                         {"numeric", ntDecimal},
                                                         {"DOUBLE PRECISION", ntDouble}};
  for (const auto& [word, expected] : kWords) {
    TNeutralType type{};
    TNumber length, precision, scale;
    engine_.DecodeColumn(word, 10, 30, 0, type, length, precision, scale);
    EXPECT_EQ(type, expected) << word;
  }
  EXPECT_THAT(MessageOf([&] {
                TNeutralType type{};
                TNumber none;
                engine_.DecodeColumn("NATIONAL CHARACTER", 10, 0, 0, type, none, none, none);
              }),
              HasSubstr("Unhandled column type NATIONAL CHARACTER"));
}

TEST_F(InterbaseEngineTest, StatementsOfStructureChanges) {
  engine_.Connect();
  backend_.columns = {Column("A", "LONG", N(0), N(4)), Column("B", "LONG", N(0), N(4))};
  std::vector<std::string> told;
  engine_.on_exec_sql = [&told](const std::string& sql) { told.push_back(sql); };
  engine_.DropColumn("T", "A");
  engine_.DropTable("U");
  EXPECT_THAT(told, ElementsAre("alter table T drop A", "drop table U"));
  EXPECT_EQ(backend_.log.back(), told.back());
  EXPECT_EQ(DumpMeta(engine_.meta()), "table T fetched\ncolumn B <I4>(0,0)\n");
  EXPECT_EQ(engine_.ExecSQL("update T set B = 1"), 3);
}

TEST_F(InterbaseEngineTest, WhatItIsAndWhatItLacks) {
  std::string text = "as it was";
  engine_.SurrogateKeyColumn("id", text);
  EXPECT_EQ(text, "as it was");
  engine_.GetDisplayName(text);
  EXPECT_EQ(text, "/d/x.fdb");
  EXPECT_EQ(engine_.QuoteName("A b"), "A b");
  EXPECT_FALSE(engine_.SupportsChunks("t"));
  TStringList list{"left over"};
  engine_.ListDatabases(list);
  EXPECT_THAT(list, IsEmpty());
  EXPECT_THROW(engine_.GetConnectionObject(), EAbstractError);
  EXPECT_THROW(engine_.ApplyParams(), EAbstractError);
  EXPECT_THROW(engine_.CreateTable("X", {"A integer"}), EAbstractError);
  EXPECT_THROW(engine_.ParseDDL("drop table T"), EAbstractError);
}

TEST_F(InterbaseEngineTest, CloneIsConnectedWhereThisOneIs) {
  engine_.Connect();
  engine_.Disconnect();
  engine_.meta().tTables.Append().name = "KEPT";
  engine_.meta().tTables.Post();
  const std::unique_ptr<TDBConn> apart = engine_.Clone();
  EXPECT_FALSE(apart->GetConnected());
  EXPECT_EQ(DumpMeta(apart->meta()), "table KEPT\n");
  engine_.Connect();
  const std::unique_ptr<TDBConn> connected = engine_.Clone();
  EXPECT_TRUE(connected->GetConnected());
  EXPECT_EQ(DumpMeta(connected->meta()), "table T\ntable U\n");
  connected->StartTransaction();
  EXPECT_TRUE(connected->InTransaction());
  EXPECT_FALSE(engine_.InTransaction());
}

TEST_F(InterbaseEngineTest, SavesItsKeys) {
  TXMLAccess store;
  engine_.SaveParams("/root/reference", store);
  std::string text;
  for (const char* key : {"server", "database", "username", "password"})
    text += store.xmlGetVal("/root/reference/"s + key) + " ";
  EXPECT_EQ(text, "srv /d/x.fdb joe secret ");
}

}  // namespace
}  // namespace velmora
