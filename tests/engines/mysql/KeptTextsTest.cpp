// A comparison reads most creation texts of changed tables several times; the server is asked once.

#include <gtest/gtest.h>

#include "core/Meta.h"
#include "engines/mysql/DBConnMySQL.h"
#include "support/FakeMyConnection.h"

namespace velmora {
namespace {

constexpr char kAsk[] = "open show create table `t`";

class KeptTextsTest : public ::testing::Test {
 protected:
  KeptTextsTest() {
    server_->AddTable("t", "create table t (a int not null) type=InnoDB");
    conn_.Connect();
    server_->TakeLog();
  }
  // What a comparison does with a table that differs.
  TStringList ReadThreeTimes() {
    std::string ddl;
    conn_.meta().CachedTableDDL("t", ddl);
    conn_.meta().GotoTable("t");
    conn_.FetchIfNeeded();
    EXPECT_EQ(conn_.meta().tTables.Current().cached_ddl, kNoCachedDDL) << "a fetched table has lost its text";
    conn_.meta().CachedTableDDL("t", ddl);
    EXPECT_EQ(ddl, "create table t (a int not null) type=InnoDB");
    return server_->TakeLog();
  }

  std::shared_ptr<testing::TFakeMyServer> server_ = std::make_shared<testing::TFakeMyServer>();
  TDBConnMySQL conn_{std::make_unique<testing::TFakeMyConnection>(server_), "", 3306, "d", "", ""};
};

TEST_F(KeptTextsTest, EachIsAskedForAnewByDefault) { EXPECT_EQ(ReadThreeTimes(), (TStringList{kAsk, kAsk, kAsk})); }

TEST_F(KeptTextsTest, OnceWhileAComparisonExpectsThem) {
  conn_.ExpectCreationTexts({"t"});
  EXPECT_EQ(ReadThreeTimes(), (TStringList{"expect show create table `t`", kAsk}));
}

TEST_F(KeptTextsTest, AStatementANewConnectionOrTheEndOfTheComparisonForgetsThem) {
  const std::function<void()> ends[] = {[&] { conn_.ExecSQL("set x=1"); }, [&] { conn_.Reconnect(); },
                                        [&] { conn_.ExpectCreationTexts({}); }};
  for (const auto& end : ends) {
    conn_.Reconnect();
    conn_.ExpectCreationTexts({"t"});
    ReadThreeTimes();
    std::string ddl;
    conn_.ShowCreateTable("t", ddl);
    EXPECT_TRUE(server_->TakeLog().empty()) << "kept";
    end();
    server_->TakeLog();
    conn_.ShowCreateTable("t", ddl);
    EXPECT_EQ(server_->TakeLog(), TStringList{kAsk});
  }
}

}  // namespace
}  // namespace velmora
