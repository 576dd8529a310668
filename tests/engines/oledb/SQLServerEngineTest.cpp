// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/Meta.h"
#include "engines/oledb/DBConnSQLServer.h"
#include "support/FakeOLEDB.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using ::testing::ElementsAre;
using testing::MessageOf;
using std::string_literals::operator""s;

class SQLServerEngineTest : public ::testing::Test {
 protected:
  SQLServerEngineTest() {
    backend.Answer(testing::ReadPlayedAnswers(kShop + ".txt"));
    backend.tables = {{"customers", "TABLE"},
                      {"far %s", "TABLE"},
                      {"O'Neil's Łódź 日本", "TABLE"},
                      {"orders", "TABLE"},
                      {"wide", "TABLE"}};
    engine.Connect();
  }

  std::string Fetch(const std::string& table) {
    return MessageOf([&] {
      engine.meta().GotoTable(table);
      engine.FetchIfNeeded();
    });
  }

  const std::string kShop = VELMORA_SOURCE_DIR "/tests/engines/oledb/catalog/shop";
  testing::TFakeOLEDB backend;
  TDBConnSQLServer engine{"h", "d", "u", "p", false, backend.Maker()};
};

// The catalog is asked letter for letter as the files beside the shop have it.
TEST_F(SQLServerEngineTest, ReadsTheTablesOfAShop) {
  for (const TOLEDBTableRow& table : backend.tables) EXPECT_EQ(Fetch(table.TABLE_NAME), "nothing raised");
  EXPECT_EQ(DumpMeta(engine.meta()), ReadFileText(kShop + ".golden"));
}

TEST_F(SQLServerEngineTest, RefusesWhatItCannotRead) {
  const struct {
    const char *table, *message, *left;
  } kCases[] = {
      {"with XML", "TDBConn.DecodeColumn: Unhandled column type xml", ""},
      {"with an odd constraint", "Unknown constraint type", "column x <I4>(0,0)\nconstraint what()->() type=0\n"},
      {"without keys", "Invalid object name 'sysindexes'.", "column x <I4>(0,0)\n"},
  };
  for (const auto& c : kCases) {
    backend.tables = {{c.table, "TABLE"}};
    engine.Connect();
    EXPECT_EQ(Fetch(c.table), c.message);
    EXPECT_EQ(DumpMeta(engine.meta()), "table "s + c.table + "\n" + c.left);
  }
}

TEST_F(SQLServerEngineTest, DatesBeginIn1753) {
  const TDateTime first = EncodeDate(1753, 1, 1);
  const TDateTime before = EncodeDate(1752, 12, 31) + EncodeTime(23, 59, 59);
  const struct {
    EFieldKind kind;
    TVariant value;
    const char* text;
  } kCases[] = {
      {EFieldKind::Date, TMoment{first}, "'17530101'"},
      {EFieldKind::DateTime, TMoment{before}, "Date/time value out of range"},
      {EFieldKind::Time, TMoment{before}, "Date/time value out of range"},
      {EFieldKind::Date, TMoment{before}, "Date/time value out of range"},
      {EFieldKind::TimeStamp, TMoment{before}, "'17521231 23:59:59'"},
      {EFieldKind::Date, {}, "NULL"},
      {EFieldKind::String, "it's"s, "'it''s'"},
      {EFieldKind::Blob, "\x01\xab"s, "0x01AB"},
  };
  for (const auto& c : kCases) {
    const TFieldDef def{"f", c.kind};
    std::string text;
    const std::string error = MessageOf([&] { engine.FieldValParam({def, c.value}, text); });
    EXPECT_EQ(text.empty() ? error : text, c.text);
  }
}

TEST_F(SQLServerEngineTest, ChangesByProceduresOfTheServer) {
  Fetch("customers");
  Fetch("far %s");
  backend.TakeLog();
  engine.BeforeDataLoad("customers");
  engine.AfterDataLoad("customers");
  engine.BeforeDataLoad("far %s");
  EXPECT_THAT(backend.TakeLog(),
              ElementsAre("set identity_insert [customers] on", "set identity_insert [customers] off"));
  engine.ModifyColumn("customers", "id", "no", "bigint");
  EXPECT_THAT(backend.TakeLog(), ElementsAre("exec sp_rename '[customers].[id]','no','COLUMN'",
                                             "alter table [customers] ALTER COLUMN [no] bigint"));
  engine.RenameTable("customers", "N");
  EXPECT_THAT(backend.TakeLog(), ElementsAre("exec sp_rename '[customers]','N'"));
  engine.meta().GotoTable("N");
}

}  // namespace
}  // namespace velmora
