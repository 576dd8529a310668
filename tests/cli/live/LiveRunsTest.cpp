// SPDX-License-Identifier: GPL-3.0-or-later

// Runs beside others who use the target meanwhile.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "support/LiveCompanion.h"

namespace velmora {
namespace {

using testing::Answer;
using ::testing::HasSubstr;
using testing::RunLive;
using testing::TAnswer;
using testing::TLiveDatabase;

class LiveRunsTest : public testing::TLiveCompanion {
 protected:
  LiveRunsTest() {
    database_.Run("create table t (a int primary key) engine=InnoDB");
    database_.Run("create view v as select 1 one");
    File("wanted.sql",
         "create table t (a int primary key, b int) engine=InnoDB; create table n (a int) engine=InnoDB;");
  }
  std::vector<std::string> Sync(std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"sync", folder_ / "wanted.sql", testing::LiveSource("beside"), "--allow-unsafe"});
    return more;
  }
  std::string Ask(const std::string& query) { return Answer(database_.Connection(), query); }
  std::string ColumnsOfT() {
    return Ask("select count(*) from information_schema.columns where table_schema = 'beside' and table_name = 't'");
  }

  TLiveDatabase database_{"beside"};
};

// The question before the run takes as long as the user does.
TEST_F(LiveRunsTest, NothingRunsOnATargetThatMoved) {
  const struct {
    const char* meanwhile;
    const char* told;
  } cases[] = {
      {"alter table t comment 'moved'", "table t is not as it was"},
      {"drop table t", "table t is gone"},
      {"create table n (x int)", "table n has come"},
      {"drop view v", "view v is gone"},
  };
  for (const auto& c : cases) {
    for (const char* undo : {"drop table if exists t, n", "create table t (a int primary key) engine=InnoDB",
                             "create or replace view v as select 1 one"})
      database_.Run(undo);
    const TAnswer answer = RunLive(Sync({"--undo", folder_ / "back.sql"}), [&](const std::string&, bool) {
      database_.Run(c.meanwhile);
      return "yes";
    });
    EXPECT_EQ(answer.status, 2) << c.meanwhile;
    EXPECT_THAT(answer.err, HasSubstr(std::string("nothing was run: ") + c.told + ". Compare anew"));
    EXPECT_NE(ColumnsOfT(), "2") << c.meanwhile;
  }
}

// Its trigger is on another table by then, and yet what it was.
TEST_F(LiveRunsTest, ATableThatIsRenamedIsLookedAtUnderItsOldName) {
  database_.Run("create trigger g before insert on t for each row set new.a = 1");
  File("wanted.sql",
       "create table r (a int primary key, b int) engine=InnoDB; create view v as select 1 one; "
       "create trigger g before insert on r for each row set new.a = 2;");
  for (const bool moves : {true, false}) {
    const TAnswer answer = RunLive(Sync({"--rename", "t=r"}), [&](const std::string&, bool) {
      if (moves) database_.Run("alter table t comment 'moved'");
      return "yes";
    });
    EXPECT_EQ(answer.status, moves ? 2 : 0) << answer.err;
    if (moves) EXPECT_THAT(answer.err, HasSubstr("nothing was run: table t is not as it was. Compare anew"));
  }
}

TEST_F(LiveRunsTest, ALockThatIsGivenBackInTimeHoldsNobodyUp) {
  database_.Run("lock tables t read");
  File("err", "");
  Start(Sync({"--yes", "--lock-wait", "1", "--retries", "9", "--dialect", "exact"}));
  WaitUntil("it is told", [&] { return Told().find("try 2 of 10 follows") != std::string::npos; });
  database_.Run("unlock tables");
  const TAnswer answer = End();
  EXPECT_EQ(answer.status, 0) << answer.err;
  EXPECT_EQ(ColumnsOfT(), "2");
}

// Rows would still come, and a comparison would see what is about to change.
TEST_F(LiveRunsTest, ARunDoesNotGoOnWhileTheServerIsStillAtIt) {
  File(
      "j",
      R"J({"run":"begins","version":1,"at":"now","target":"database beside of server localhost","statements":2,"undo":"","end":""}
{"statement":1,"state":"begins","hash":"1","text":"select get_lock('beside', 60)"}
)J");
  ASSERT_EQ(Ask("select get_lock('beside', 60)"), "1");
  const auto other = testing::ServerConnection(testing::TPrivateServer::Shared(), "beside");
  other->SetConnected(true);
  const std::string id = Answer(*other, "select connection_id()");
  std::thread at_work([&] { Answer(*other, "select get_lock('beside', 60)"); });
  WaitUntil("it waits", [&] {
    return Ask("select count(*) from information_schema.processlist where info like 'select get_lock%'") != "0";
  });
  const std::vector<std::string> sync = Sync({"--yes", "--lock-wait", "1", "--journal", folder_ / "j"});
  const TAnswer refused = RunLive(sync);
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, HasSubstr("still under way on the target, as connection " + id));
  database_.Run("do release_lock('beside')");
  at_work.join();
  const TAnswer answer = RunLive(sync);
  EXPECT_EQ(answer.status, 0) << answer.err;
}

// A tool of others gives its copy's constraints other names, and has its own opinion of clauses.
TEST_F(LiveRunsTest, ACopyToolLeavesWhatAComparisonFindsIdentical) {
  if (std::system("pt-online-schema-change --version > /dev/null 2>&1") != 0)
    GTEST_SKIP() << "pt-online-schema-change is not installed";
  if (testing::OnMySQL()) GTEST_SKIP() << "this release of the tool does not know MySQL of today";
  for (const char* statement :
       {"drop table t", "create table p (a int primary key) engine=InnoDB",
        "create table t (a int primary key, p int, n varchar(9), constraint f foreign key (p) references p (a), "
        "constraint c check (a > 0)) engine=InnoDB",
        "create table child (a int primary key, t int, constraint g foreign key (t) references t (a)) engine=InnoDB",
        "insert into p values (1)", "insert into t values (1, 1, 'x'), (2, null, 'y')",
        "insert into child values (1, 2)"})
    database_.Run(statement);
  File("wanted.sql",
       "create table p (a int primary key) engine=InnoDB;\n"
       "create table t (a int primary key, b int default 7, p int, n varchar(300) comment 'it''s \"n\"', "
       "constraint f foreign key (p) references p (a), constraint c check (a > 0)) engine=InnoDB;\n"
       "create table child (a int primary key, t int, constraint g foreign key (t) references t (a)) engine=InnoDB;\n"
       "create view v as select 1 one;\n");
  const TAnswer answer = RunLive(Sync({"--yes", "--osc",
                                       "pt-online-schema-change --alter {CLAUSES} F={DEFAULTS},D={DATABASE},t={TABLE} "
                                       "--alter-foreign-keys-method rebuild_constraints --execute"}));
  EXPECT_EQ(answer.status, 0) << answer.err;
  EXPECT_THAT(answer.out, HasSubstr("Databases are identical"));
  EXPECT_THAT(Ask("show create table t"), HasSubstr("CONSTRAINT `_f`")) << "the tool was at it";
  EXPECT_EQ(Ask("select group_concat(a, b, n order by a) from t"), "17x,27y");
}

}  // namespace
}  // namespace velmora
