// What the engine sets up on a server whose creation texts are to be read without loss.

#include <gtest/gtest.h>

#include "engines/mysql/DBConnMySQL.h"
#include "support/FakeMyConnection.h"

namespace velmora {
namespace {

class ExactSessionTest : public ::testing::Test {
 protected:
  ExactSessionTest() { server_->AddTable("a`b", "create table `a``b` (a int)"); }

  std::shared_ptr<testing::TFakeMyServer> server_ = std::make_shared<testing::TFakeMyServer>();
  TDBConnMySQL conn_{std::make_unique<testing::TFakeMyConnection>(server_), "", 3306, "d", "", ""};
  const TStringList set_up_ = {
      "open select @@session.sql_mode",
      "exec set session sql_quote_show_create=1, session sql_mode='STRICT_TRANS_TABLES,STRICT_ALL_TABLES,"
      "NO_ENGINE_SUBSTITUTION,NO_AUTO_VALUE_ON_ZERO,ERROR_FOR_DIVISION_BY_ZERO'",
      "exec set session explicit_defaults_for_timestamp=1"};
};

TEST_F(ExactSessionTest, OnceForEachConnection) {
  server_->AddColumn("select @@session.sql_mode",
                     {"ANSI_QUOTES,MYSQL40,NO_FIELD_OPTIONS,STRICT_TRANS_TABLES,NO_ZERO_IN_DATE,NO_ZERO_DATE,"
                      "ERROR_FOR_DIVISION_BY_ZERO,TRADITIONAL,NO_BACKSLASH_ESCAPES"});
  conn_.Connect();
  server_->TakeLog();
  conn_.PrepareExactTexts();
  conn_.PrepareExactTexts();
  EXPECT_EQ(server_->TakeLog(), set_up_);
  conn_.Reconnect();
  TStringList anew = server_->TakeLog();
  EXPECT_EQ(anew.back(), "open show tables") << "read in the session that was set up";
  EXPECT_EQ(TStringList(anew.begin() + 2, anew.end() - 1), set_up_);
  conn_.PrepareExactTexts(false);
  conn_.Reconnect();
  EXPECT_EQ(server_->TakeLog().size(), 3u) << "disconnect, connect, show tables";
}

// The default dialect has never done it, and for what it reads from files it would be wrong.
TEST_F(ExactSessionTest, BackticksInNamesAreDoubled) {
  server_->AddColumn("select @@session.sql_mode", {""});
  server_->answers["show create table `a``b`"] = server_->answers["show create table `a`b`"];
  conn_.Connect();
  std::string ddl;
  server_->TakeLog();
  conn_.ShowCreateTable("a`b", ddl);
  conn_.PrepareExactTexts();
  conn_.ShowCreateTable("a`b", ddl);
  const TStringList log = server_->TakeLog();
  EXPECT_EQ(log.front(), "open show create table `a`b`");
  EXPECT_EQ(log.back(), "open show create table `a``b`");
}

}  // namespace
}  // namespace velmora
