// The companion in the exact dialect against a real server.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LiveCompanion.h"

namespace velmora {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::TAnswer;
using testing::TLiveDatabase;

class LiveExactTest : public testing::TLiveCompanion {
 protected:
  LiveExactTest() {
    reference_.Run("create table t (a varchar(20), `order` enum('x','y'), key k (`order`))");
    target_.Run("create table t (a varchar(40), key k (a))");
    target_.Run("insert into t values ('kept')");
  }
  TAnswer Exact(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin() + 1, pair_.begin(), pair_.end());
    arguments.insert(arguments.end(), {"--dialect", "exact"});
    return Run(arguments);
  }
  std::string Ask(const std::string& query) { return testing::Answer(target_.Connection(), query); }

  TLiveDatabase reference_{"cli_reference"};
  TLiveDatabase target_{"cli_target"};
  const std::vector<std::string> pair_{Source("cli_reference"), Source("cli_target")};
};

TEST_F(LiveExactTest, SyncRefusesWhatIsUnsafeAndTellsTheResultOfWhatRan) {
  target_.Run("create view v as select 1");
  const TAnswer refused = Exact({"sync", "--yes"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.out, "");
  EXPECT_THAT(refused.err, StartsWith("velmora-cli: note: Left alone: view v of the target\n"
                                      "velmora-cli: note: Not the same: view v: only in the target\n"
                                      "velmora-cli: unsafe: t: Changed column a: "));
  EXPECT_THAT(
      refused.err,
      EndsWith("4 statements on database cli_target of server localhost, with 1 unsafe change: nothing was run; "
               "to run all of it, give --allow-unsafe\n"));
  EXPECT_EQ(Ask("select count(*) from information_schema.columns where table_schema = 'cli_target'"), "2");

  const TAnswer ran = Exact({"sync", "--yes", "--allow-unsafe", "--verify-on-server"});
  EXPECT_EQ(ran.status, 0) << ran.err;
  const std::string tables_alone =
      "All tables are identical.\n1 other object differs (views, triggers, routines, events), left alone\n";
  EXPECT_THAT(ran.out, EndsWith(" statements ran on localhost.cli_target.\n" + tables_alone));
  EXPECT_THAT(ran.err, HasSubstr("note: verified on the server: 0 differences left\n"));
  EXPECT_EQ(Ask("select a from t"), "kept");
  EXPECT_EQ(Exact({"sync", "--yes"}).out, tables_alone);
  const TAnswer compared = Exact({"compare"});
  EXPECT_EQ(compared.out, tables_alone);
  EXPECT_EQ(compared.status, 1) << "the databases are not the same";
  EXPECT_THAT(Exact({"compare", "--format", "json"}).out, HasSubstr("\"difference\":\"only in the target\""));
}

TEST_F(LiveExactTest, RowsInTheWayEndTheRunBeforeItBegins) {
  reference_.Run("create table u (a int, c int, unique key k (a))");
  target_.Run("create table u (a int)");
  target_.Run("insert into u values (1), (1)");
  const TAnswer refused = Exact({"sync", "--yes", "--allow-unsafe"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, HasSubstr("velmora-cli: rows in the way: u: unique key k: 2 rows with values"));
  EXPECT_EQ(Ask("select count(*) from information_schema.columns where table_schema = 'cli_target'"), "2");
  const TAnswer ran = Exact({"sync", "--yes", "--allow-unsafe", "--no-row-checks"});
  EXPECT_THAT(ran.err, HasSubstr("Duplicate entry"));
}

TEST_F(LiveExactTest, ACollationThatTheTargetDoesNotKnowIsToldAndMapped) {
  target_.Run("create or replace table t (a varchar(20)) character set latin1");
  const std::string file =
      File("r.sql",
           "CREATE TABLE `t` (\n  `a` varchar(20) CHARACTER SET utf8mb4 COLLATE utf8mb4_0900_ai_ci DEFAULT NULL\n) "
           "ENGINE=InnoDB DEFAULT CHARSET=latin1 COLLATE=latin1_swedish_ci;\n");
  const std::vector<std::string> sync{"sync", file, pair_[1], "--dialect", "exact", "--yes"};
  const TAnswer refused = Run(sync);
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, HasSubstr("unsafe: t: Changed column a: the target's server does not know the collation "
                                     "utf8mb4_0900_ai_ci (--map-collation utf8mb4_0900_ai_ci=NAME takes"));
  std::vector<std::string> mapped = sync;
  mapped.insert(mapped.end(), {"--map-collation", "utf8mb4_0900_ai_ci=utf8mb4_unicode_ci"});
  EXPECT_EQ(Run(mapped).status, 0);
  EXPECT_EQ(Run(mapped).out, "Databases are identical. Nothing to synchronize.\n");
  for (const char* wrong : {"utf8mb4_bin", "=x", "latin1_bin=utf8mb4_bin"}) {
    mapped.back() = wrong;
    EXPECT_THAT(Run(mapped).err, HasSubstr("--map-collation")) << wrong;
  }
}

TEST_F(LiveExactTest, RowsThatDoNotFitEndTheRunAndStayWhole) {
  target_.Run("insert into t values (repeat('x', 30))");
  const TAnswer answer = Exact({"sync", "--yes", "--allow-unsafe"});
  EXPECT_EQ(answer.status, 2);
  EXPECT_THAT(answer.err, HasSubstr("statement 3 of 4 failed at line 8, column 1: alter table `t`\n"));
  EXPECT_EQ(Ask("select max(length(a)) from t"), "30");
  EXPECT_EQ(Ask("select group_concat(column_name) from information_schema.columns where table_schema = 'cli_target'"),
            "a");
}

TEST_F(LiveExactTest, ATaskFilesDialectCountsUnlessOneIsGiven) {
  const std::string file = folder_ / "t.vlt";
  ASSERT_EQ(Run({"task", "new", file, pair_[0], pair_[1], "--dialect", "exact"}).status, 0);
  EXPECT_THAT(Run({"script", file}).out, HasSubstr("\r\nalter table `t`\r\n"));
  const TAnswer standard = Run({"script", file, "--dialect", "standard"});
  EXPECT_EQ(standard.status, 2) << "it cannot read an enum";
  const TAnswer saved = Run({"script", file, "-o", folder_ / "s.sql"});
  EXPECT_EQ(saved.status, 0);
  const TAnswer refused = Run({"sync", file, "--script", folder_ / "s.sql", "--yes"});
  EXPECT_EQ(refused.status, 2) << "the script of a file is asked for what it may lose, with nothing compared";
  EXPECT_THAT(refused.err, HasSubstr("unsafe: line 8: alter table `t` modify column `a` varchar(20)"));
  const TAnswer ran = Run({"sync", file, "--script", folder_ / "s.sql", "--yes", "--allow-unsafe"});
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_EQ(Run({"compare", file}).status, 0);
}

}  // namespace
}  // namespace velmora
