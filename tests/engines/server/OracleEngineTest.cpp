#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "core/Meta.h"
#include "engines/server/ClientOracle.h"
#include "engines/server/DBConnOracle.h"
#include "support/FakeOracle.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using ::testing::ElementsAre;
using testing::FakeOracleOf;
using testing::MessageOf;
using testing::TFakeOracle;

constexpr char kHome[] = VELMORA_FAKE_CLIENTS "/oracle";

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
  TFakeOracle& server = FakeOracleOf(kHome);
  std::unique_ptr<TDBConnOracle> engine = NewEngine();
};

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

TEST_F(DBConnOracle, ReadsPartsOfATable) {
  AddOracleAnswers(server, R"(table T
column A, NUMBER
column B, DATE
query select "A","B" from (select rownum as tmpzqrownum,"T".* from "T" order by 1) zqtmptbl where )"
                           R"(zqtmptbl.tmpzqrownum between 11 and 15
columns A, B
row 1, 2)");
  engine->Connect();
  std::unique_ptr<TDataset> rows = engine->OpenTableDataChunk("T", 11, 5);
  EXPECT_EQ(rows->RecordCount(), 1);
  engine->CloseTable(std::move(rows));
}

TEST_F(DBConnOracle, ItsCopyHasTheStore) {
  engine->meta().tTables.Append().name = "KEPT";
  engine->meta().tTables.Post();
  const std::unique_ptr<TDBConn> copy = engine->Clone();
  EXPECT_FALSE(copy->GetConnected());
  EXPECT_EQ(DumpMeta(copy->meta()), "table KEPT\n");
}

}  // namespace
}  // namespace velmora
