// SPDX-License-Identifier: GPL-3.0-or-later

// The companion with a target's server to which letter case in names of tables is nothing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "support/LiveCompanion.h"

namespace velmora {
namespace {

using testing::Answer;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::TAnswer;
using testing::TLiveDatabase;
using testing::TPrivateServer;

constexpr char kNothingLeft[] = "Databases are identical. Nothing to synchronize.\n";
const TStringList kSpelt = {"create table Parents (Id int primary key)",
                            "create table Orders (Id int primary key, p int, foreign key (p) references Parents (Id))",
                            "create table `Größe` (Id int primary key)",
                            "create view Vw as select O.Id as Orders from Orders O join Parents on Parents.Id = O.p",
                            "create trigger Tr before insert on Orders for each row set new.p = 1"};

class LiveLetterCaseTest : public testing::TLiveCompanion {
 protected:
  void SetUp() override {
    if (testing::OnMySQL()) GTEST_SKIP() << "this server takes the setting with its first start alone";
    target_.emplace("folding", Folding());
    for (const std::string& statement : kSpelt) reference_.Run(statement);
  }
  static TPrivateServer& Folding() {
    static TPrivateServer server({"--lower-case-table-names=1"});
    return server;
  }
  TAnswer Run(const std::string& command, const std::string& reference, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {command, reference, testing::LiveSource("folding", Folding().Port())});
    return testing::RunLive(more);
  }
  std::string FileOfIt() { return File("structure.sql", JoinList(kSpelt, ";\n") + ";\n"); }

  TLiveDatabase reference_{"spelt"};
  std::optional<TLiveDatabase> target_;
};

TEST_F(LiveLetterCaseTest, NamesWithCapitalsAreTheTablesThatTheTargetHas) {
  for (const std::string& reference : {testing::LiveSource("spelt"), FileOfIt()}) {
    SCOPED_TRACE(reference);
    const TAnswer made = Run("sync", reference, {"--yes", "--verify-on-server"});
    EXPECT_THAT(made.out, EndsWith(kNothingLeft)) << made.err;
    EXPECT_EQ(Answer(target_->Connection(),
                     "select group_concat(table_name order by 1) from information_schema.tables "
                     "where table_schema = database()"),
              "größe,orders,parents,vw");
    EXPECT_EQ(Run("compare", reference, {"--via-server"}).out.find("drop"), std::string::npos);
    target_->Run("drop view vw");
    target_->Run("alter table orders add gone int");
    const TAnswer again = Run("sync", reference, {"--yes", "--allow-unsafe", "--rename", "Orders.gone=p"});
    EXPECT_THAT(again.out, EndsWith(kNothingLeft)) << again.err;
    target_->Run("drop table orders");
  }
}

TEST_F(LiveLetterCaseTest, TwoTablesThatBecomeOneAreLeftAlone) {
  for (const std::string& statement : kSpelt) target_->Run(statement);
  reference_.Run("create table orders (z int)");
  const TAnswer told = Run("script", testing::LiveSource("spelt"));
  EXPECT_THAT(told.err, HasSubstr("table orders is skipped: to the target's server Orders and orders are the same"));
  EXPECT_THAT(told.out, Not(HasSubstr("orders`")));
}

}  // namespace
}  // namespace velmora
